#include "PracticeServer/Ship.h"
#include "PracticeServer/Shot.h"
#include "PracticeServer/Steering.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace practice;

namespace {

constexpr float dt = 1.0F / 60.0F;

/// Flies a ship and returns how far from the origin it got.
float fly(Ship& ship, float seconds, const Rules& rules = Rules())
{
    float farthest = 0.0F;
    for (float time = 0.0F; time < seconds; time += dt) {
        flyShip(ship, rules, dt);
        farthest = std::max(farthest, ship.position.length());
    }
    return farthest;
}

Ship shipWith(std::uint32_t controls, const Quaternion& orientation = Quaternion())
{
    Ship ship;
    ship.alive = true;
    ship.orientation = orientation;
    ship.input = {orientation, controls};
    return ship;
}

}  // namespace

TEST(Flight, EachKeyPushesWhereTheScreenShowsItInTheShipsOwnFrame)
{
    const float diagonal = std::sqrt(0.5F);
    const struct
    {
        const char* name;
        std::uint32_t controls;
        Vector3 direction;
    } cases[] = {
        {"W", control::forward, {0, 0, 1}},
        {"S", control::backward, {0, 0, -1}},
        {"D, the screen's right", control::right, {-1, 0, 0}},
        {"A, the screen's left", control::left, {1, 0, 0}},
        {"Space", control::up, {0, 1, 0}},
        {"C", control::down, {0, -1, 0}},
        {"W and D are not faster than W", control::forward | control::right, {-diagonal, 0, diagonal}},
        {"A and D cancel", control::left | control::right, {0, 0, 0}},
    };
    const Quaternion turned = Quaternion::FromAxisAngle(1.2F, Vector3(0, 1, 0));
    for (const auto& c : cases) {
        for (const Quaternion& orientation : {Quaternion(), turned}) {
            Ship ship = shipWith(c.controls, orientation);
            flyShip(ship, Rules(), dt);
            const Vector3 expected = orientation.rotate(c.direction) * (Rules().thrust * dt);
            EXPECT_LT(ship.velocity.distance(expected), 0.01F) << c.name << ": " << ship.velocity.toString();
        }
    }
}

TEST(Flight, TheShipTurnsTheShortWayNoFasterThanItsRateAndArrives)
{
    const Rules rules;
    for (const float sign : {1.0F, -1.0F}) {  // of a quaternion: the same orientation
        Ship ship = shipWith(0);
        ship.input.orientation = Quaternion::FromAxisAngle(2.0F, Vector3(0, 1, 0)) * sign;
        flyShip(ship, rules, dt);
        EXPECT_NEAR(std::acos(noseOf(ship.orientation).z), rules.turnRate * dt, 0.001F);
        fly(ship, 2.0F / rules.turnRate + 0.1F);
        EXPECT_NEAR(std::fabs(ship.orientation.dotProduct(ship.input.orientation)), 1.0F, 1e-5F);
    }
}

TEST(Flight, SpeedIsLimitedAndFadesWithoutThrust)
{
    Ship ship = shipWith(control::forward | control::up);
    fly(ship, 5.0F);
    EXPECT_NEAR(ship.velocity.length(), Rules().maxSpeed, 0.1F);
    ship.input.controls = 0;
    fly(ship, 3.0F);
    EXPECT_LT(ship.velocity.length(), 0.3F * Rules().maxSpeed);
}

TEST(Flight, TheBorderHoldsEveryShipSoftlyAndItsLimitWithoutTheSpring)
{
    Rules noSpring;
    noSpring.borderSpring = 0.0F;
    for (const Vector3& outward : {Vector3(1, 0, 0), Vector3(0, -1, 0), Vector3(0.3F, 0.5F, -0.8F)}) {
        Ship soft = shipWith(control::forward, lookAlong(outward));
        Ship hard = soft;
        const float farthest = fly(soft, 60.0F);
        EXPECT_GT(farthest, Rules().borderRadius - 1.0F);
        EXPECT_LT(farthest, Rules().borderLimit - 20.0F);
        EXPECT_LT(fly(hard, 60.0F, noSpring), Rules().borderLimit + 0.01F);
    }
}

TEST(Shots, ContactIsFoundAnywhereAlongTheWay)
{
    const struct
    {
        const char* name;
        Vector3 offset, motion;
        float expected;  ///< negative: no contact
    } cases[] = {
        {"head on", {0, 0, -10}, {0, 0, 12}, 0.5F},
        {"through the whole sphere in one step", {0, 0, -100}, {0, 0, 1000}, 0.096F},
        {"just out of reach", {4.1F, 0, -100}, {0, 0, 1000}, -1.0F},
        {"stops short", {0, 0, -10}, {0, 0, 5}, -1.0F},
        {"has passed already", {0, 0, 10}, {0, 0, 5}, -1.0F},
        {"begins inside", {1, 1, 1}, {0, 0, -50}, 0.0F},
        {"stands still outside", {0, 0, 9}, {0, 0, 0}, -1.0F},
    };
    for (const auto& c : cases) {
        EXPECT_NEAR(contactTime(c.offset, c.motion, 4.0F).value_or(-1.0F), c.expected, 0.001F) << c.name;
    }
}

TEST(Shots, ALedShotMeetsItsTarget)
{
    const std::pair<Vector3, Vector3> targets[] = {
        {{0, 0, 100}, {0, 0, 0}}, {{0, 0, 100}, {40, 10, 0}}, {{-50, 20, 80}, {0, 0, -50}}};
    for (const auto& [offset, drift] : targets) {
        const Vector3 velocity = leadDirection(offset, drift, 200.0F) * 200.0F;
        EXPECT_TRUE(contactTime(offset * -1.0F, (velocity - drift) * 2.0F, 0.5F)) << offset.toString();
    }
    // One that cannot be caught is aimed at.
    EXPECT_LT(leadDirection({0, 0, 10}, {0, 0, 300}, 200.0F).distance({0, 0, 1}), 1e-4F);
}
