#include "tests/end_to_end/GameSession.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

using namespace std::chrono_literals;
using support::Clock;
using support::countChanged;
using support::isBluish;
using support::isReddish;
using support::Picture;
using support::Region;
using support::Ship;

constexpr std::uint64_t redId = 11;
constexpr std::uint64_t blueId = 12;
constexpr std::uint64_t shotId = 13;
constexpr int half = 25;    // pixels, of the square in which an object is looked for
constexpr int enough = 60;  // of its 2,500 pixels show the object
constexpr auto someFrames = 250ms;

Ship shipAt(std::uint64_t id, bool blueTeam, Vector3 position)
{
    Ship ship;
    ship.id = id;
    ship.blueTeam = blueTeam;
    ship.position = position;
    return ship;
}

Picture soon(const GameSession& game)
{
    std::this_thread::sleep_for(someFrames);
    return game.display.screenshot();
}

// States as a server sends them to move a ship and let it rest: the client blends to the last within half a
// second.
void fly(GameSession& game, std::uint64_t id, Vector3 from, Vector3 to)
{
    constexpr int steps = 10;
    constexpr int restingStates = 4;
    std::uint32_t time = 1000;
    for (int i = 1; i <= steps + restingStates; ++i) {
        const float way = std::min(1.0F, static_cast<float>(i) / steps);
        time += 50;
        game.server.sendUdp(support::update(id, time, from + (to - from) * way));
        std::this_thread::sleep_for(50ms);
    }
    std::this_thread::sleep_for(800ms);
}

}  // namespace

TEST(Screen, ShipsAppearInTheirColoursMoveAndVanish)
{
    const Region left = GameSession::onScreen(-4, 3, 15, half);
    const Region right = GameSession::onScreen(4, 3, 15, half);
    const Region lower = GameSession::onScreen(-4, 0, 15, half);
    GameSession game;
    game.join(lonelyShip());
    const Picture empty = game.display.screenshot();

    const Vector3 redPlace = game.inView(-4, 3, 15);
    game.server.sendTcp(support::shipInfo(shipAt(redId, false, redPlace)));
    game.server.sendUdp(support::shipInfo(shipAt(blueId, true, game.inView(4, 3, 15))));
    const Picture both = soon(game);
    EXPECT_GT(both.count(left, isReddish), empty.count(left, isReddish) + enough);
    EXPECT_GT(both.count(right, isBluish), empty.count(right, isBluish) + enough);
    EXPECT_EQ(countChanged(empty, both, lower), 0);

    fly(game, redId, redPlace, game.inView(-4, 0, 15));
    const Picture moved = game.display.screenshot();
    EXPECT_GT(moved.count(lower, isReddish), empty.count(lower, isReddish) + enough);
    EXPECT_EQ(countChanged(empty, moved, left), 0);
    EXPECT_GT(moved.count(right, isBluish), empty.count(right, isBluish) + enough);

    game.server.sendTcp(support::destroy(redId) + support::destroy(blueId));
    const Picture gone = soon(game);
    EXPECT_EQ(countChanged(empty, gone, lower), 0);
    EXPECT_EQ(countChanged(empty, gone, right), 0);
    EXPECT_EQ(game.leave(), "status 0");
}

TEST(Screen, ADestroyedShotLeavesAnExplosionForAboutASecond)
{
    const Region place = GameSession::onScreen(0, 8, 40, half);
    GameSession game;
    game.join(lonelyShip());
    const Picture empty = game.display.screenshot();
    game.server.sendUdp(support::shotInfo(shotId, true, game.inView(0, 8, 40)));
    const Picture shot = soon(game);
    EXPECT_GT(shot.count(place, isBluish), empty.count(place, isBluish));

    const Clock::time_point destroyed = Clock::now();
    game.server.sendUdp(support::destroy(shotId));
    const Picture explosion = soon(game);
    EXPECT_GT(countChanged(empty, explosion, place), 500);
    Clock::duration seen = 0s;
    const auto isOver = [&] {
        const Clock::duration asked = Clock::now() - destroyed;
        const bool over = countChanged(empty, game.display.screenshot(), place) == 0;
        seen = over ? seen : asked;
        return over;
    };
    EXPECT_TRUE(support::eventually(isOver, 5s));
    EXPECT_GT(seen, 700ms);
    EXPECT_LT(seen, 1600ms);
}

TEST(Screen, TheDisplayShowsOnlyTheFrameRateUntilTheOwnShipExistsAndThenEveryLineInItsColour)
{
    constexpr int ink = 8;  // pixels in full colour that even a lone "0" has
    const Region frameRate = {0, 0, 150, 24};
    const Region speed = {0, 25, 150, 24};
    const Region health = {0, 50, 150, 24};
    const Region score = {200, 0, 45, 24};
    const Region redScore = {200, 25, 45, 24};
    const Region blueScore = {200, 50, 45, 24};
    const Region position = {250, 0, 400, 24};

    GameSession game;
    game.server.sendTcp(support::welcome(GameSession::ownId, 1));
    const Picture before = soon(game);
    EXPECT_GT(before.count(frameRate, support::isPureRed), 40);
    EXPECT_LT(before.count(health, support::isPureGreen), ink);
    EXPECT_LT(before.count(redScore, support::isPureRed), ink);
    EXPECT_LT(before.count(blueScore, support::isPureBlue), ink);

    Ship own = lonelyShip();
    own.health = 20.0F;
    own.score = -12;
    game.join(own);
    const Picture healthy = game.display.screenshot();
    EXPECT_GT(healthy.count(frameRate, support::isPureRed), 40);
    EXPECT_GT(healthy.count(speed, support::isWhite), before.count(speed, support::isWhite) + 40);
    EXPECT_GT(healthy.count(health, support::isPureGreen), 40);
    EXPECT_LT(healthy.count(health, support::isPureRed), ink);
    EXPECT_GT(healthy.count(score, support::isWhite), before.count(score, support::isWhite) + ink);
    EXPECT_GT(healthy.count(redScore, support::isPureRed), ink);
    EXPECT_GT(healthy.count(blueScore, support::isPureBlue), ink);
    EXPECT_GT(healthy.count(position, support::isWhite), before.count(position, support::isWhite) + 100);

    own.health = 19.99F;
    own.redScore = 888;
    game.server.sendTcp(support::shipInfo(own));
    const Picture hurt = soon(game);
    EXPECT_GT(hurt.count(health, support::isPureRed), 40);
    EXPECT_LT(hurt.count(health, support::isPureGreen), ink);
    EXPECT_GT(hurt.count(redScore, support::isPureRed), 2 * healthy.count(redScore, support::isPureRed));
    EXPECT_EQ(countChanged(healthy, hurt, blueScore), 0);
}
