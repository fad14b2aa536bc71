#include "scene/General.h"
#include "server/match/Hull.h"
#include "server/match/Ship.h"

#include <gtest/gtest.h>

#include <algorithm>
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

TEST(Flight, TheBorderTurnsShipsBackToTheFight)
{
    for (const Team team : {Team::blue, Team::red}) {
        Ship ship = shipWith(control::forward, Quaternion());
        ship.position = team == Team::blue ? General::blueBase : General::redBase;
        float farthest = 0.0F;
        float nearest = 1000.0F;  // to the fight, after it was beyond the border
        for (int i = 0; i < 60 * 60; ++i) {
            flyShip(ship, Rules(), dt);
            const float distance = ship.position.length();
            if (i > 200 && distance > farthest && distance < Rules().borderRadius + 20.0F) {
                EXPECT_GT(ship.velocity.z, Rules().maxSpeed * 0.9F) << "a gentle push";
            }
            farthest = std::max(farthest, distance);
            const float toFight = ship.position.distance(fightMiddle(team));
            nearest = farthest > Rules().borderRadius ? std::min(nearest, toFight) : nearest;
            EXPECT_LT(std::fabs(ship.position.x - fightMiddle(team).x), 20.0F) << "sideways";
            EXPECT_EQ(noseOf(ship.orientation), Vector3(0, 0, 1)) << "its pilot steers";
        }
        ship.position.z = 640.0F;
        flyShip(ship, Rules(), dt);
        EXPECT_GT(ship.borderGrip, 0.0F);
        ship.position.z = 600.0F;
        flyShip(ship, Rules(), dt);
        EXPECT_GT(ship.borderGrip, 0.0F) << "still leaving";
        ship.input.controls = control::backward;
        flyShip(ship, Rules(), dt);
        EXPECT_EQ(ship.borderGrip, 0.0F) << "its pilot returns";
        EXPECT_LT(farthest, 1000.0F);
        EXPECT_LT(nearest, Rules().returnRadius);
        EXPECT_GT(nearest, 40.0F) << "then it lets go";
    }
}

TEST(Flight, TheBorderLeadsAroundTheCarriers)
{
    for (const Vector3& away : {Vector3(0, 0, -1), Vector3(0, -0.3F, -1), Vector3(0.1F, 0.1F, -1),
                                Vector3(0, -1, 0.1F), Vector3(0, 1, 0.1F), Vector3(1, 0, 0.1F)}) {
        for (const std::uint32_t controls : {control::forward, std::uint32_t(0)}) {
            Ship ship = shipWith(controls, lookAlong(away));
            ship.position = General::redBase + away * 260.0F;
            ship.velocity = away * 70.0F;
            int resting = 0;
            bool wasOutside = false;
            for (int i = 0; i < 90 * 60; ++i) {
                flyShip(ship, Rules(), dt);
                wasOutside = wasOutside || ship.position.length() > Rules().borderRadius;
                resting = ship.velocity.length() < 3.0F && ship.borderGrip > 0.0F ? resting + 1 : 0;
                ASSERT_LT(resting, 300) << ship.position.toString();
            }
            EXPECT_TRUE(wasOutside || controls == 0) << away.toString();
        }
    }
}

TEST(Hulls, ShipsSlideAlongThem)
{
    const struct
    {
        Vector3 from;  ///< the base
        Vector3 nose;
    } cases[] = {{{0, 0, 0}, {0, -0.5F, 1}},        // the deck
                 {{5, -60, -150}, {0, 0.5F, 1}},    // the keel
                 {{80, -20, -160}, {-0.5F, 0, 1}},  // a pod
                 {{35, 10, -155}, {-0.5F, 0, 1}},   // the hangar
                 {{0, 30, -150}, {0.5F, 0, 1}}};    // the bridge, around its corner
    for (const auto& c : cases) {
        Ship ship = shipWith(control::forward, lookAlong(c.nose));
        ship.position = General::redBase + c.from;
        bool touched = false;
        for (int i = 0; i < 150; ++i) {
            flyShip(ship, Rules(), dt);
            EXPECT_LT(wayOutOfHulls(ship.position, Rules().shipRadius).length(), 0.01F);
            touched = touched || !(wayOutOfHulls(ship.position, Rules().shipRadius + 0.1F) == Vector3());
        }
        EXPECT_TRUE(touched) << c.from.toString();
        const Vector3 before = ship.position;
        flyShip(ship, Rules(), dt);
        EXPECT_LT((ship.position - before).distance(ship.velocity * dt), 0.1F) << "clients derive velocities";
        EXPECT_GT(ship.velocity.z, 40.0F) << c.from.toString();
    }
}
