#include "tests/end_to_end/GameSession.h"

#include <gtest/gtest.h>

#include <regex>

using namespace std::chrono_literals;

TEST(Controls, EachKeyIsABitWhileItIsHeld)
{
    const std::pair<std::string, std::uint32_t> cases[] = {
        {"keydown w", 1},
        {"keydown s", 2},
        {"keydown d", 4},
        {"keydown a", 8},
        {"keydown space", 16},
        {"keydown c", 32},
        {"mousedown 1", 0x40000000},
        {"keydown w keydown s keydown d keydown a keydown space keydown c mousedown 1", 0x4000003F},
        {"keydown x", 0}};
    GameSession game;
    game.join(lonelyShip());
    for (const auto& [press, bits] : cases) {
        SCOPED_TRACE(press);
        const auto awaitBits = [&](std::uint32_t wanted) {
            return game.awaitUpdate([=](const auto& update) { return update.controls == wanted; });
        };
        game.display.xdotool(press);
        std::this_thread::sleep_for(100ms);
        EXPECT_TRUE(awaitBits(bits));
        game.display.xdotool(std::regex_replace(press, std::regex("down"), "up"));
        EXPECT_TRUE(awaitBits(0));
    }
}

// The turn in the viewer's own axes, x to its left, y up, z ahead, as the sine of half the angle. A step of
// the pointer is lost when it falls into the instant in which the client sets it back: so there are many
// steps.
TEST(Controls, TheMouseTurnsTheViewAndEAndQRollIt)
{
    std::string right, down;
    for (int step = 0; step < 20; ++step) {  // of 8 pixels at 0.005 radians: the sine is 0.389 at most
        right += "mousemove_relative 8 0 sleep 0.025 ";
        down += "mousemove_relative 0 8 sleep 0.025 ";
    }
    const std::pair<std::string, Vector3> cases[] = {{right, {0, -0.34F, 0}},
                                                     {down, {0.34F, 0, 0}},
                                                     {"keydown e sleep 0.6 keyup e", {0, 0, 0.3F}},
                                                     {"keydown q sleep 0.6 keyup q", {0, 0, -0.3F}}};
    GameSession game;
    game.join(lonelyShip());
    for (const auto& [gesture, expected] : cases) {
        SCOPED_TRACE(gesture);
        const Quaternion start = game.server.lastSteering().orientation;
        game.display.xdotool(gesture);
        std::this_thread::sleep_for(300ms);
        const Quaternion turn = ~start * game.server.lastSteering().orientation;
        const auto tolerance = [](float value) { return value == 0.0F ? 1e-3F : 0.08F; };
        EXPECT_NEAR(turn.x, expected.x, tolerance(expected.x));
        EXPECT_NEAR(turn.y, expected.y, tolerance(expected.y));
        EXPECT_NEAR(turn.z, expected.z, tolerance(expected.z));
    }
}
