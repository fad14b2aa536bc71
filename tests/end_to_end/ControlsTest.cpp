#include "tests/end_to_end/GameSession.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace {

using namespace std::chrono_literals;
using support::Steering;

constexpr std::uint32_t fire = 0x40000000;

bool awaitBoosters(GameSession& game, std::uint32_t bits)
{
    return game.server.awaitUpdate([bits](const Steering& s) { return s.boosters == bits; });
}

// The turn of the view since `start`, in the viewer's own axes: x to its left, y up, z ahead.
Quaternion turnSince(const Quaternion& start, const GameSession& game)
{
    return ~start * game.server.lastSteering().orientation;
}

// Pixels read between two frames of a pointer that jumps: a step can fall into the instant in which the
// client sets the pointer back, and is lost then. So there are many steps, and the last ones need a moment to
// arrive.
void glide(const GameSession& game, int dx, int dy)
{
    for (int step = 0; step < 20; ++step) {
        game.display.movePointer(dx, dy);
        std::this_thread::sleep_for(25ms);
    }
    std::this_thread::sleep_for(300ms);
}

}  // namespace

TEST(Controls, EachKeyAndTheButtonIsItsBitWhileItIsHeldAndOppositeKeysAddUp)
{
    struct Case
    {
        std::vector<std::string> keys;
        bool button;
        std::uint32_t bits;
    };
    const std::vector<Case> cases = {
        {{"w"}, false, 1},
        {{"s"}, false, 2},
        {{"d"}, false, 4},
        {{"a"}, false, 8},
        {{"space"}, false, 16},
        {{"c"}, false, 32},
        {{}, true, fire},
        {{"w", "s"}, false, 3},
        {{"d", "a"}, false, 12},
        {{"space", "c"}, false, 48},
        {{"w", "a"}, true, fire | 9U},
        {{"Shift_L", "w"}, false, 1},
        {{"x", "Left"}, false, 0},
    };
    GameSession game;
    game.join(lonelyShip());
    for (const Case& c : cases) {
        SCOPED_TRACE("bits " + std::to_string(c.bits));
        for (const std::string& key : c.keys) {
            game.display.keyDown(key);
        }
        if (c.button) {
            game.display.buttonDown();
        }
        std::this_thread::sleep_for(100ms);
        EXPECT_TRUE(awaitBoosters(game, c.bits));
        EXPECT_EQ(game.server.lastSteering().boosters, c.bits);
        for (const std::string& key : c.keys) {
            game.display.keyUp(key);
        }
        if (c.button) {
            game.display.buttonUp();
        }
        EXPECT_TRUE(awaitBoosters(game, 0));
    }
    EXPECT_EQ(game.leave(), "status 0");
}

// 20 steps of 8 pixels at 0.005 radians each are 0.8 radians: the half angle's sine is 0.389.
TEST(Controls, TheViewTurnsToWhereTheMouseMoves)
{
    constexpr float full = 0.3894F;
    constexpr float lostSteps = 0.12F;
    GameSession game;
    game.join(lonelyShip());

    Quaternion start = game.server.lastSteering().orientation;
    glide(game, 8, 0);
    Quaternion turn = turnSince(start, game);
    EXPECT_NEAR(turn.y, -full + lostSteps / 2, lostSteps / 2 + 0.01F)
        << "to the right: about the up axis, negative";
    EXPECT_NEAR(turn.x, 0.0F, 1e-3F);
    EXPECT_NEAR(turn.z, 0.0F, 1e-3F);

    start = game.server.lastSteering().orientation;
    glide(game, 0, 8);
    turn = turnSince(start, game);
    EXPECT_NEAR(turn.x, full - lostSteps / 2, lostSteps / 2 + 0.01F) << "down: the nose sinks";
    EXPECT_NEAR(turn.y, 0.0F, 1e-3F);
    EXPECT_NEAR(turn.z, 0.0F, 1e-3F);
}

// One radian per second that the key is held, by the client's own frame times.
TEST(Controls, EAndQRollTheViewAboutItsOwnDirection)
{
    struct Case
    {
        const char* key;
        float sign;
    };
    GameSession game;
    game.join(lonelyShip());
    for (const Case& c : {Case{"e", 1.0F}, Case{"q", -1.0F}}) {
        SCOPED_TRACE(c.key);
        const Quaternion start = game.server.lastSteering().orientation;
        game.display.keyDown(c.key);
        std::this_thread::sleep_for(600ms);
        game.display.keyUp(c.key);
        std::this_thread::sleep_for(200ms);
        const Quaternion turn = turnSince(start, game);
        EXPECT_NEAR(turn.z * c.sign, 0.3F, 0.08F);
        EXPECT_NEAR(turn.x, 0.0F, 1e-3F);
        EXPECT_NEAR(turn.y, 0.0F, 1e-3F);
    }
}

TEST(Controls, EAndQTogetherCancel)
{
    GameSession game;
    game.join(lonelyShip());
    const Quaternion start = game.server.lastSteering().orientation;
    game.display.keyDown("e");
    game.display.keyDown("q");
    std::this_thread::sleep_for(500ms);
    const Quaternion held = game.server.lastSteering().orientation;
    std::this_thread::sleep_for(500ms);
    EXPECT_LT((turnSince(held, game) - Quaternion()).length(), 0.01F);
    EXPECT_LT((turnSince(start, game) - Quaternion()).length(), 0.2F);  // the two were not pressed at once
}
