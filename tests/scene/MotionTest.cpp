#include "scene/Player.h"
#include "tests/engine/FreshWorld.h"

#include <cmath>
#include <tuple>
#include <vector>

namespace {

void feed(Transform& object, unsigned int time, Vector3 position, bool reset = false)
{
    Quaternion orientation;
    object.updateInfo(time, position, orientation, reset);
}

// Rested at the origin at time 0, then a state elsewhere 1 s later; by default 2 units on, for a velocity and
// an acceleration of 2 along x.
void startMoving(Transform& object, Vector3 to = {2.0F, 0.0F, 0.0F})
{
    feed(object, 0, {}, true);
    feed(object, 1000, to);
}

class PlayerMotion : public FreshWorld
{
protected:
    void feedTurned(unsigned int time, float degrees, bool reset = false)
    {
        Vector3 position;
        Quaternion orientation = Quaternion::FromEuler(0.0F, degrees, 0.0F);
        player.updateInfo(time, position, orientation, reset);
    }

    void expectShown(float dt, float degrees)
    {
        player.realUpdate(dt);
        const Vector3 nose = player.orientation.rotate({0.0F, 0.0F, 1.0F});
        EXPECT_NEAR(std::atan2(nose.x, nose.z) * 57.29578F, degrees, 0.05F);
    }

    Player player{1ULL, false, 100};
};

}  // namespace

TEST(Motion, TheVelocityIsMeasuredBetweenTheNewestTwoStates)
{
    const std::tuple<unsigned int, unsigned int, float> cases[] = {
        {1000, 3000, 1.5F},
        {0xFFFFFFF6U, 20, 100.0F},  // across the wrap of the clock
        {1000, 1000, 0.0F},
        {1100, 1000, 0.0F},  // backwards is nearly never, not negative
    };
    for (const auto& [from, to, velocity] : cases) {  // of a step of 3 units
        Transform object(1ULL);
        feed(object, from, {1.0F, 1.0F, 1.0F}, true);
        feed(object, to, {1.0F, 4.0F, 1.0F});
        EXPECT_NEAR(object.velocity[0].y, velocity, 1e-4F);
        EXPECT_GE(object.velocity[0].y, 0.0F);
    }
}

TEST(Motion, AResetIsShownAtOnceAndKeepsTheVelocity)
{
    Transform object(1ULL);
    startMoving(object);
    object.realUpdate(0.1F);
    feed(object, 5000, {300.0F, 0.0F, 0.0F}, true);
    EXPECT_EQ(object.smoothPosition, Vector3(300.0F, 0.0F, 0.0F));
    object.realUpdate(0.25F);
    expectNear(object.smoothPosition, {300.5F, 0.0F, 0.0F});  // no acceleration, nothing to correct
    EXPECT_EQ(object.serverTime[1], 5000U);                   // nothing is older
}

TEST(Motion, AnErrorOfTenUnitsBlendsAndOneHairMoreSnapsAndDrifts)
{
    for (const Vector3 blended : {Vector3(10.0F, 0.0F, 0.0F), Vector3(0.0F, -6.0F, 8.0F)}) {
        Transform object(1ULL);
        startMoving(object, blended);
        EXPECT_EQ(object.smoothPosition, Vector3());
    }
    Transform object(1ULL);
    startMoving(object, {1.0F, 0.0F, 0.0F});
    feed(object, 2000, {10.001F, 0.0F, 0.0F});
    EXPECT_EQ(object.smoothPosition.x, 10.001F);
    EXPECT_EQ(object.serverTime[1], 2000U);
    EXPECT_EQ(object.velocity[0], Vector3());
    // drifts on by the change of velocity, 8.001, that it keeps: a tenth of it, by a tenth of a second
    object.realUpdate(0.1F);
    expectNear(object.smoothPosition, {10.08101F, 0.0F, 0.0F});
}

TEST(Motion, BlendsForHalfASecondAndExtrapolatesAfterIt)
{
    const std::pair<std::vector<float>, float> cases[] = {
        {{0.25F}, 1.625F},                     // half way to 2 + 0.5 * 2.5
        {{0.25F, 0.25F}, 3.5F},                // the edge blends: all the way to 2 + 0.5 * 3
        {{std::nextafter(0.5F, 1.0F)}, 1.5F},  // past it extrapolates from where it is: 0.5 * 3
        {{0.5F, 10.0F}, 233.5F},               // and for ever: by 10 * 23 more
    };
    for (const auto& [frames, x] : cases) {
        Transform object(1ULL);
        startMoving(object);
        for (const float dt : frames) {
            object.realUpdate(dt);
        }
        expectNear(object.smoothPosition, {x, 0.0F, 0.0F});
        EXPECT_EQ(object.position, Vector3());
    }
}

TEST_F(PlayerMotion, APlayerIsDrawnWhereThePreviousFrameSmoothedItTo)
{
    startMoving(player);
    for (const float drawn : {0.0F, 1.625F, 3.5F}) {
        player.realUpdate(0.25F);
        expectNear(player.position, {drawn, 0.0F, 0.0F});
    }
}

TEST_F(PlayerMotion, ThePlayerTurnsByFifteenthsOfASecondTowardsTheNewestStateAndBeyondItInALongFrame)
{
    feedTurned(0, 0.0F, true);
    feedTurned(100, 80.0F);
    expectShown(1.0F / 60.0F, 20.0F);  // a quarter of the way
    expectShown(1.0F / 30.0F, 50.0F);  // half of the rest
    feedTurned(1000, 0.0F, true);
    expectShown(1.0F / 15.0F, 0.0F);
    feedTurned(1000, 20.0F);  // no interval at all: simply towards the newest
    expectShown(1.0F / 30.0F, 10.0F);
    feedTurned(1050, 40.0F);
    expectShown(0.11F, 158.5F);  // two whole intervals: towards 40 + 2 * 30 degrees, by 1.65 of the way
}
