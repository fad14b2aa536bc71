#include "server/match/Ship.h"
#include "server/match/Shot.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

using namespace practice;

namespace {

constexpr float dt = 1.0F / 60.0F;

Ship shipWith(std::uint32_t controls, const Quaternion& orientation)
{
    Ship ship;
    ship.orientation = orientation;
    ship.input = {orientation, controls};
    return ship;
}

}  // namespace

TEST(Flight, KeysPushInTheShipsOwnFrame)
{
    const float diagonal = std::sqrt(0.5F);
    const std::pair<std::uint32_t, Vector3> cases[] = {
        {control::forward, {0, 0, 1}},                                  // W
        {control::backward, {0, 0, -1}},                                // S
        {control::right, {-1, 0, 0}},                                   // D: the screen's right
        {control::left, {1, 0, 0}},                                     // A
        {control::up, {0, 1, 0}},                                       // Space
        {control::down, {0, -1, 0}},                                    // C
        {control::forward | control::right, {-diagonal, 0, diagonal}},  // not faster than one alone
        {control::left | control::right, {0, 0, 0}},
    };
    const Quaternion turned = Quaternion::FromAxisAngle(1.2F, Vector3(0, 1, 0));
    for (const auto& [controls, direction] : cases) {
        Ship ship = shipWith(controls, turned);
        flyShip(ship, Rules(), dt);
        const Vector3 expected = turned.rotate(direction) * (Rules().thrust * dt);
        EXPECT_LT(ship.velocity.distance(expected), 0.01F) << controls << ": " << ship.velocity.toString();
    }
}

TEST(Flight, AShipTurnsTheShortWayAtItsRate)
{
    for (const float sign : {1.0F, -1.0F}) {  // of a quaternion: the same orientation
        Ship ship;
        ship.input.orientation = Quaternion::FromAxisAngle(2.0F, Vector3(0, 1, 0)) * sign;
        flyShip(ship, Rules(), dt);
        EXPECT_NEAR(std::acos(noseOf(ship.orientation).z), Rules().turnRate * dt, 0.001F);
        for (int i = 0; i < 60; ++i) {
            flyShip(ship, Rules(), dt);
        }
        EXPECT_NEAR(std::fabs(ship.orientation.dotProduct(ship.input.orientation)), 1.0F, 1e-5F);
    }
}

TEST(Flight, TheBorderHoldsShips)
{
    Rules noSpring;
    noSpring.borderPush = 0.0F;
    Ship soft = shipWith(control::forward, lookAlong({0.3F, 0.5F, -0.8F}));
    Ship hard = soft;
    for (int i = 0; i < 60 * 60; ++i) {
        flyShip(soft, Rules(), dt);
        flyShip(hard, noSpring, dt);
    }
    EXPECT_NEAR(soft.position.length(), Rules().borderRadius + 30.0F, 1.0F);
    EXPECT_NEAR(hard.position.length(), Rules().borderLimit, 0.01F);
    EXPECT_LT(hard.velocity.length(), 1.1F) << "more than one step of thrust";
}

TEST(Shots, ContactIsFoundAnywhereOnTheWay)
{
    const auto contact = [](const Vector3& offset, const Vector3& motion) {
        return contactTime(offset, motion, 4.0F).value_or(-1.0F);
    };
    EXPECT_NEAR(contact({0, 0, -100}, {0, 0, 1000}), 0.096F, 0.001F) << "through it in one step";
    EXPECT_EQ(contact({4.1F, 0, -100}, {0, 0, 1000}), -1.0F) << "just out of reach";
    EXPECT_EQ(contact({0, 0, -10}, {0, 0, 5}), -1.0F) << "stops short";
    EXPECT_EQ(contact({0, 0, 10}, {0, 0, 5}), -1.0F) << "has passed already";
    EXPECT_EQ(contact({1, 1, 1}, {0, 0, -50}), 0.0F) << "begins inside";
    EXPECT_EQ(contact({0, 0, 9}, {0, 0, 0}), -1.0F) << "stands still outside";
}
