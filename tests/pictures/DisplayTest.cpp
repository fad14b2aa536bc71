#include "tests/pictures/CommittedPicture.h"

#include <gtest/gtest.h>

#include <limits>

using messages::ShipState;
using support::Picture;
using support::Region;

namespace {

// The first line, the frame rate, is another in each frame.
const struct
{
    const char* name;
    Region place;
} lines[] = {{"speed", {0, 25, 200, 25}},        {"health", {0, 50, 200, 25}},
             {"score", {200, 0, 50, 25}},        {"red-score", {200, 25, 150, 25}},
             {"blue-score", {200, 50, 150, 25}}, {"position", {250, 0, 510, 25}}};

const Vector3 longPosition = {-1234567.0F, 345678.875F, -7654321.0F};

struct Case
{
    const char* name;
    ShipState ship;
};

CommittedPicture pictureOf(const Case& c, std::size_t line)
{
    return {"display-" + std::string(c.name) + "-" + lines[line].name, lines[line].place};
}

// The viewer sits ahead of the own ship and does not see it.
ShipState unseenShip()
{
    ShipState ship = lonelyShip();
    ship.orientation = Quaternion(0, 0, 1, 0);
    return ship;
}

Case healthy()
{
    ShipState ship = unseenShip();
    ship.health = 87.5F;
    ship.score = 123;
    ship.redScore = 42;
    ship.blueScore = 7;
    ship.position = longPosition;
    return {"healthy", ship};
}

Case extreme()
{
    ShipState ship = unseenShip();
    ship.health = -3.25F;
    ship.score = std::numeric_limits<std::int32_t>::min();
    ship.redScore = -987654;
    ship.blueScore = std::numeric_limits<std::int32_t>::max();
    ship.position = longPosition;  // the score overdraws its beginning
    return {"extreme", ship};
}

void expectEveryLineIsMissed(const Picture& screen, const Picture& bare, const Case& c)
{
    for (std::size_t i = 0; i < std::size(lines); ++i) {
        Picture altered = screen;
        altered.paste(bare.crop(lines[i].place), lines[i].place.x, lines[i].place.y);
        EXPECT_FALSE(pictureOf(c, i).isLike(altered)) << c.name << " without " << lines[i].name;
    }
}

}  // namespace

TEST(DisplayPictures, EveryLineInItsColourAtItsPlace)
{
    for (const Case& c : {healthy(), extreme()}) {
        GameSession game;
        game.join(c.ship);
        Picture screen = game.soon();
        for (std::size_t i = 0; i < std::size(lines); ++i) {
            screen = expectPicture(game, pictureOf(c, i));
        }
        game.server.sendTcp(messages::destroyFrame(GameSession::ownId));  // the viewer stays
        expectEveryLineIsMissed(screen, game.soon(), c);
    }
}

TEST(DisplayPictures, AnotherDigitIsAnotherPicture)
{
    const Case c = healthy();
    ShipState ship = c.ship;
    ship.health += 1.0F;
    ship.position.x += 1.0F;
    for (std::int32_t* score : {&ship.score, &ship.redScore, &ship.blueScore}) {
        *score += 1;
    }
    GameSession game;
    game.join(ship);
    const Picture screen = game.soon();
    for (std::size_t i = 1; i < std::size(lines); ++i) {  // but the speed
        EXPECT_FALSE(pictureOf(c, i).isLike(screen)) << lines[i].name;
    }
}

// 9.5 units in 8 ms; the sky flies along with the viewer.
TEST(DisplayPictures, TheSpeedOfAFastShip)
{
    Case fast = {"fast", unseenShip()};
    GameSession game;
    game.join(fast.ship);
    game.server.sendTcp(messages::updateFrame(GameSession::ownId, fast.ship.time + 8,
                                              fast.ship.position + Vector3(0, 0, 9.5F),
                                              fast.ship.orientation));
    expectPicture(game, pictureOf(fast, 0));
}
