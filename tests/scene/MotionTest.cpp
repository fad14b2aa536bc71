#include "scene/Player.h"
#include "scene/Transform.h"

#include "tests/engine/FreshWorld.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

Quaternion aboutY(float degrees)
{
    return Quaternion::FromEuler(0.0F, degrees, 0.0F);
}

void feed(Transform& object, unsigned int time, Vector3 position, bool reset = false)
{
    Quaternion orientation = aboutY(static_cast<float>(time % 90));
    object.updateInfo(time, position, orientation, reset);
}

// Rested at the origin at time 0, then a state 2 units on, 1 s later: velocity and acceleration of 2 along x.
void startMoving(Transform& object)
{
    feed(object, 0, {}, true);
    feed(object, 1000, {2.0F, 0.0F, 0.0F});
}

}  // namespace

TEST(Motion, TheVelocityIsMeasuredBetweenTheNewestTwoStates)
{
    const struct
    {
        const char* what;
        unsigned int from, to;
        float velocity;  // for a step of 3 units
    } cases[] = {
        {"a tenth of a second", 1000, 1100, 30.0F},
        {"two seconds", 1000, 3000, 1.5F},
        {"across the wrap of the clock", 0xFFFFFFF6U, 20, 100.0F},
        {"the same time", 1000, 1000, 0.0F},
        {"backwards is nearly never, not negative", 1100, 1000, 0.0F},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        Transform object(1ULL);
        feed(object, c.from, {1.0F, 1.0F, 1.0F}, true);
        feed(object, c.to, {1.0F, 4.0F, 1.0F});
        EXPECT_NEAR(object.velocity[0].y, c.velocity, 1e-4F);
        EXPECT_GE(object.velocity[0].y, 0.0F);
        EXPECT_EQ(object.currentVelocity, object.velocity[0]);
        EXPECT_EQ(object.acceleration, object.velocity[0]);
    }
}

TEST(Motion, AResetIsShownAtOnceAndKeepsTheVelocity)
{
    Transform object(1ULL);
    startMoving(object);
    object.realUpdate(0.1F);
    feed(object, 5000, {300.0F, 0.0F, 0.0F}, true);
    EXPECT_EQ(object.smoothPosition, Vector3(300.0F, 0.0F, 0.0F));
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(object.serverTime[i], 5000U);
        EXPECT_EQ(object.serverPosition[i], Vector3(300.0F, 0.0F, 0.0F));
    }
    EXPECT_EQ(object.velocity[0], Vector3(2.0F, 0.0F, 0.0F));
    EXPECT_EQ(object.velocity[1], Vector3(2.0F, 0.0F, 0.0F));
    EXPECT_EQ(object.acceleration, Vector3());
    EXPECT_EQ(object.correction, Vector3());
    object.realUpdate(0.25F);
    expectNear(object.smoothPosition, {300.5F, 0.0F, 0.0F});
}

TEST(Motion, AnErrorOfTenUnitsBlendsAndOneHairMoreSnaps)
{
    for (const Vector3 blended : {Vector3(10.0F, 0.0F, 0.0F), Vector3(0.0F, -6.0F, 8.0F)}) {
        Transform object(1ULL);
        feed(object, 0, {}, true);
        feed(object, 1000, blended);
        EXPECT_EQ(object.smoothPosition, Vector3());
        EXPECT_EQ(object.correction, blended);
    }
    Transform object(1ULL);
    feed(object, 0, {}, true);
    feed(object, 1000, {10.001F, 0.0F, 0.0F});
    EXPECT_EQ(object.smoothPosition.x, 10.001F);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(object.serverTime[i], 1000U);
        EXPECT_EQ(object.serverPosition[i].x, 10.001F);
    }
    for (const Vector3 v :
         {object.velocity[0], object.velocity[1], object.currentVelocity, object.correction}) {
        EXPECT_EQ(v, Vector3());
    }
}

TEST(Motion, ASnappedObjectDriftsByTheChangeOfVelocityItKeeps)
{
    Transform object(1ULL);
    feed(object, 0, {}, true);
    feed(object, 1000, {1.0F, 0.0F, 0.0F});
    feed(object, 2000, {101.0F, 0.0F, 0.0F});
    EXPECT_EQ(object.acceleration, Vector3(99.0F, 0.0F, 0.0F));
    object.realUpdate(0.1F);  // velocity 9.9, so 4.95 within the blend, of which a fifth has passed
    expectNear(object.smoothPosition, {101.99F, 0.0F, 0.0F});
}

TEST(Motion, BlendsForHalfASecondAndExtrapolatesAfterIt)
{
    const float hairMore = std::nextafter(0.5F, 1.0F);
    const struct
    {
        const char* what;
        std::vector<float> frames;
        float x;
    } cases[] = {
        {"no time has passed", {0.0F}, 0.0F},
        {"a quarter: half way to 2 + 0.5 * 2.5", {0.25F}, 1.625F},
        {"the edge blends: all the way to 2 + 0.5 * 3", {0.5F}, 3.5F},
        {"the edge in two frames", {0.25F, 0.25F}, 3.5F},
        {"past the edge extrapolates from where it is: 0.5 * 3", {hairMore}, 1.5F},
        {"blend, then extrapolate by 0.25 * 3.5", {0.5F, 0.25F}, 4.375F},
        {"for ever: by 10 * 23 more", {0.5F, 10.0F}, 233.5F},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        Transform object(1ULL);
        startMoving(object);
        for (const float dt : c.frames) {
            object.realUpdate(dt);
        }
        expectNear(object.smoothPosition, {c.x, 0.0F, 0.0F});
        EXPECT_EQ(object.position, Vector3());
    }
}

namespace {

class PlayerMotion : public FreshWorld
{
protected:
    void feedTurned(unsigned int time, float degrees, bool reset)
    {
        Vector3 position;
        Quaternion orientation = aboutY(degrees);
        player.updateInfo(time, position, orientation, reset);
    }

    float shownDegrees()
    {
        const Vector3 nose = player.orientation.rotate({0.0F, 0.0F, 1.0F});
        return std::atan2(nose.x, nose.z) * 57.29578F;
    }

    Player player{1ULL, false, 100};
};

}  // namespace

TEST_F(PlayerMotion, APlayerIsDrawnWhereThePreviousFrameSmoothedItTo)
{
    startMoving(player);
    player.realUpdate(0.25F);
    EXPECT_EQ(player.position, Vector3());
    player.realUpdate(0.25F);
    expectNear(player.position, {1.625F, 0.0F, 0.0F});
    expectNear(player.smoothPosition, {3.5F, 0.0F, 0.0F});
}

TEST_F(PlayerMotion, ThePlayerTurnsTowardsTheNewestStateByFifteenthsOfASecond)
{
    feedTurned(0, 0.0F, true);
    feedTurned(100, 80.0F, false);
    player.realUpdate(1.0F / 60.0F);  // a quarter of the way
    EXPECT_NEAR(shownDegrees(), 20.0F, 0.01F);
    player.realUpdate(1.0F / 30.0F);  // half of the rest
    EXPECT_NEAR(shownDegrees(), 50.0F, 0.01F);
}

TEST_F(PlayerMotion, AFrameLongerThanTheServersIntervalTurnsOnAndOvershoots)
{
    feedTurned(0, 0.0F, true);
    feedTurned(50, 20.0F, false);
    player.realUpdate(0.11F);  // two whole intervals: towards 20 + 2 * 20 degrees, by 1.65 of the way
    EXPECT_NEAR(shownDegrees(), 99.0F, 0.05F);
}

TEST_F(PlayerMotion, TwoStatesOfTheSameTimeAimAtTheNewestOne)
{
    feedTurned(1000, 30.0F, true);
    player.realUpdate(1.0F / 15.0F);
    EXPECT_NEAR(shownDegrees(), 30.0F, 0.01F);
    feedTurned(1000, 60.0F, false);
    player.realUpdate(1.0F / 30.0F);
    EXPECT_NEAR(shownDegrees(), 45.0F, 0.01F);
}
