#include "PracticeServer/Shot.h"

#include <gtest/gtest.h>

using namespace practice;

TEST(Shots, ContactIsFoundAnywhereAlongTheWay)
{
    const struct
    {
        const char* name;
        Vector3 offset;
        Vector3 motion;
        float expected;  ///< negative: no contact
    } cases[] = {
        {"head on", {0, 0, -10}, {0, 0, 12}, 0.5F},
        {"through the whole sphere in one step", {0, 0, -100}, {0, 0, 1000}, 0.096F},
        {"off centre but within reach", {3.9F, 0, -100}, {0, 0, 1000}, 0.0991F},
        {"just out of reach", {4.1F, 0, -100}, {0, 0, 1000}, -1.0F},
        {"stops short", {0, 0, -10}, {0, 0, 5}, -1.0F},
        {"flies away", {0, 0, -10}, {0, 0, -50}, -1.0F},
        {"begins inside", {1, 1, 1}, {0, 0, -50}, 0.0F},
        {"stands still outside", {0, 0, 9}, {0, 0, 0}, -1.0F},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const auto time = contactTime(c.offset, c.motion, 4.0F);
        ASSERT_EQ(time.has_value(), c.expected >= 0.0F);
        if (time) {
            EXPECT_NEAR(*time, c.expected, 0.001F);
        }
    }
}

TEST(Shots, AShotLeavesTheNoseWithTheShipsVelocityAdded)
{
    Ship ship;
    ship.team = Team::blue;
    ship.position = Vector3(1, 2, 3);
    ship.velocity = Vector3(10, 0, 0);
    const Rules rules;
    const Shot shot = shotFrom(ship, 7, rules);
    EXPECT_EQ(shot.position, Vector3(1, 2, 3 + rules.muzzleDistance));
    EXPECT_EQ(shot.velocity, Vector3(10, 0, rules.shotSpeed));
    EXPECT_EQ(shot.team, Team::blue);
}
