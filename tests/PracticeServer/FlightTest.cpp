#include "PracticeServer/Ship.h"
#include "PracticeServer/Steering.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace practice;

namespace {

constexpr float dt = 1.0F / 60.0F;

Ship shipWith(std::uint32_t controls, const Quaternion& orientation = Quaternion())
{
    Ship ship;
    ship.alive = true;
    ship.orientation = orientation;
    ship.input = {orientation, controls};
    return ship;
}

void fly(Ship& ship, const Rules& rules, float seconds)
{
    for (float time = 0.0F; time < seconds; time += dt) {
        flyShip(ship, rules, dt);
    }
}

void expectNear(const Vector3& actual, const Vector3& expected, float tolerance)
{
    EXPECT_LT(actual.distance(expected), tolerance) << actual.toString() << " is not " << expected.toString();
}

}  // namespace

TEST(Flight, EachKeyPushesWhereTheScreenShowsIt)
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
        {"the trigger alone", control::fire, {0, 0, 0}},
    };
    const Rules rules;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Ship ship = shipWith(c.controls);
        flyShip(ship, rules, dt);
        expectNear(ship.velocity, c.direction * (rules.thrust * dt), 0.01F);
    }
}

TEST(Flight, ThrustFollowsTheShipsOwnFrame)
{
    const Quaternion noseAlongX = Quaternion::FromAxisAngle(1.5707963F, Vector3(0, 1, 0));
    Ship ship = shipWith(control::forward, noseAlongX);
    flyShip(ship, Rules(), dt);
    EXPECT_GT(ship.velocity.x, 0.5F);
    EXPECT_NEAR(ship.velocity.z, 0.0F, 0.001F);
}

TEST(Flight, TheShipTurnsNoFasterThanItsRateAndArrives)
{
    const Rules rules;
    Ship ship = shipWith(0);
    ship.input.orientation = Quaternion::FromAxisAngle(2.0F, Vector3(0, 1, 0));
    flyShip(ship, rules, dt);
    const float turned = std::acos(noseOf(ship.orientation).z);
    EXPECT_NEAR(turned, rules.turnRate * dt, 0.001F);
    fly(ship, rules, 2.0F / rules.turnRate + 0.1F);
    EXPECT_EQ(ship.orientation, ship.input.orientation);
}

TEST(Flight, TheSameOrientationWithOppositeSignIsNoTurn)
{
    const Quaternion some = Quaternion::FromAxisAngle(0.7F, Vector3(0, 1, 0));
    const Quaternion turned = turnTowards(some, -some, 0.01F);
    EXPECT_NEAR(std::fabs(turned.dotProduct(some)), 1.0F, 1e-5F);
}

TEST(Flight, SpeedIsLimitedAndFadesWithoutThrust)
{
    const Rules rules;
    Ship ship = shipWith(control::forward | control::up);
    fly(ship, rules, 5.0F);
    EXPECT_NEAR(ship.velocity.length(), rules.maxSpeed, 0.1F);
    ship.input.controls = 0;
    fly(ship, rules, 3.0F);
    EXPECT_LT(ship.velocity.length(), 0.3F * rules.maxSpeed);
}

TEST(Flight, TheBorderHoldsEveryShip)
{
    Rules noSpring;
    noSpring.borderSpring = 0.0F;
    const struct
    {
        const char* name;
        Rules rules;
        float farthest;
    } cases[] = {{"the spring holds a ship softly", Rules(), 660.0F},
                 {"the limit holds without it", noSpring, 700.01F}};
    for (const auto& c : cases) {
        for (const Vector3& outward : {Vector3(1, 0, 0), Vector3(0, -1, 0), Vector3(0.3F, 0.5F, -0.8F)}) {
            SCOPED_TRACE(c.name + outward.toString());
            Ship ship = shipWith(control::forward, lookAlong(outward));
            float farthest = 0.0F;
            for (int i = 0; i < 60 * 60; ++i) {
                flyShip(ship, c.rules, dt);
                farthest = std::max(farthest, ship.position.length());
            }
            EXPECT_GT(farthest, 599.0F);
            EXPECT_LT(farthest, c.farthest);
        }
    }
}

TEST(Steering, LookAlongPointsTheNoseAndStaysUpright)
{
    for (const Vector3& direction :
         {Vector3(0, 0, 2), Vector3(-3, 1, -2), Vector3(5, -4, 1), Vector3(0, 7, 0)}) {
        Vector3 unit = direction;
        unit.normalise();
        const Quaternion q = lookAlong(direction);
        expectNear(noseOf(q), unit, 1e-4F);
        EXPECT_GE(q.rotate(Vector3(0, 1, 0)).y, -1e-4F);
    }
}

TEST(Steering, ALedShotMeetsItsTarget)
{
    const struct
    {
        Vector3 offset;
        Vector3 drift;
    } cases[] = {{{0, 0, 100}, {0, 0, 0}}, {{0, 0, 100}, {40, 10, 0}}, {{-50, 20, 80}, {0, 0, -50}}};
    for (const auto& c : cases) {
        const Vector3 velocity = leadDirection(c.offset, c.drift, 200.0F) * 200.0F;
        float nearest = 1e9F;
        for (float time = 0.0F; time < 2.0F; time += 0.001F) {
            nearest = std::min(nearest, (velocity * time).distance(c.offset + c.drift * time));
        }
        EXPECT_LT(nearest, 0.5F);
    }
    expectNear(leadDirection(Vector3(0, 0, 10), Vector3(0, 0, 300), 200.0F), Vector3(0, 0, 1), 1e-4F);
}
