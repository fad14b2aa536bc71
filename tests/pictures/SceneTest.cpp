#include "tests/pictures/CommittedPicture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace std::chrono_literals;
using messages::ShipState;
using support::Picture;
using support::Region;

namespace {

constexpr float pi = 3.14159265F;

Quaternion aboutY(float angle)
{
    return Quaternion::FromAxisAngle(angle, Vector3(0, 1, 0));
}

// A ship that faces the viewer's back: the viewer sits 5 units ahead of it and sees all but it.
ShipState behindTheViewer(Vector3 viewer)
{
    ShipState ship;
    ship.id = GameSession::ownId;
    ship.orientation = Quaternion(0, 0, 1, 0);
    ship.position = viewer - Vector3(0, 2, 5);
    return ship;
}

float angleBetween(Quaternion a, Quaternion b)
{
    return 2.0F * std::acos(std::min(1.0F, std::abs(a.dotProduct(b))));
}

// Turns the view by one movement of the mouse, in pixels. The client puts the pointer back to the centre in
// every frame: one that it overlooks while doing so has to be repeated.
void turnView(const GameSession& game, int right, int down)
{
    constexpr float radiansPerPixel = 0.005F;
    const Quaternion before = game.server.lastSteering().orientation;
    const auto turned = [&] { return angleBetween(before, game.server.lastSteering().orientation); };
    const std::string place = std::to_string(400 + right) + " " + std::to_string(300 + down);
    for (int attempt = 0; attempt < 5 && turned() < 0.1F; ++attempt) {
        game.display.xdotool("mousemove " + place);
        peer::eventually([&] { return turned() > 0.1F; }, 1s);
    }
    ASSERT_NEAR(turned(), radiansPerPixel * static_cast<float>(std::abs(right + down)), 2e-3F);
}

// Four sides of a fighter of each team, blue above red.
std::vector<ShipState> parade(const GameSession& game)
{
    std::vector<ShipState> ships;
    for (unsigned int i = 0; i < 8; ++i) {
        const auto column = static_cast<float>(i % 4);
        ShipState ship;
        ship.id = 20 + i;
        ship.blueTeam = i < 4;
        ship.position = game.inView(5.0F * column - 7.5F, ship.blueTeam ? 1.3F : -1.7F, 18.0F);
        ship.orientation = aboutY(pi / 2.0F * column + 0.1F);
        ships.push_back(ship);
    }
    return ships;
}

}  // namespace

// 314 pixels of the mouse are a quarter turn.
TEST(Pictures, TheSkyHasItsFaceInEachOfSixDirections)
{
    constexpr Region middle = {240, 150, 320, 240};  // above the own ship, when the viewer looks back
    const struct
    {
        CommittedPicture picture;
        int right, down;  ///< one movement of the mouse, in pixels
        int times;
    } directions[] = {
        {{"sky-ahead", middle}, 0, 0, 0},    {{"sky-right", middle}, 157, 0, 2},
        {{"sky-behind", middle}, 157, 0, 2}, {{"sky-left", middle}, 157, 0, 2},
        {{"sky-up", middle}, 0, -157, 2},    {{"sky-down", middle}, 0, 157, 4},
    };
    GameSession game;
    game.join(behindTheViewer(Vector3(0, 0, 30000)));  // the carriers are too far to be drawn
    std::vector<Picture> screens;
    for (const auto& direction : directions) {
        for (int i = 0; i < direction.times; ++i) {
            turnView(game, direction.right, direction.down);
        }
        screens.push_back(expectPicture(game, direction.picture));
    }
    for (std::size_t i = 0; i < screens.size(); ++i) {
        for (std::size_t k = 0; k < screens.size(); ++k) {
            EXPECT_EQ(directions[i].picture.isLike(screens[k]), i == k)
                << directions[k].picture.name << " in the place of " << directions[i].picture.name;
        }
    }
}

TEST(Pictures, FightersOfBothTeamsShowTheirFourSides)
{
    const CommittedPicture sides = {"fighters", {90, 190, 620, 190}};
    GameSession game;
    game.join(behindTheViewer(Vector3(0, 0, 3000)));
    std::vector<ShipState> ships = parade(game);
    const auto show = [&game](const ShipState& ship) { game.server.sendTcp(messages::infoFrame(ship)); };
    std::for_each(ships.begin(), ships.end(), show);
    expectPicture(game, sides);

    const auto expectFault = [&](const char* fault, ShipState altered) {
        const ShipState right = ships[altered.id - ships[0].id];
        show(altered);
        expectAnotherPicture(game, sides, fault);
        show(right);
    };
    ShipState moved = ships[0], farther = ships[2], recoloured = ships[1], turned = ships[6];
    moved.position.y += 1.0F;
    farther.position.z += 1.0F;
    recoloured.blueTeam = false;
    turned.orientation = turned.orientation * aboutY(pi);
    expectFault("one ship is a unit higher", moved);
    expectFault("one ship is a unit farther", farther);
    expectFault("one ship has the other team's colour", recoloured);
    expectFault("one ship flies the other way", turned);
    expectPicture(game, sides);  // so each fault was the only one
}

TEST(Pictures, TheCarriersStandWhereTheTeamsStart)
{
    const struct
    {
        CommittedPicture picture;
        Vector3 viewer;
    } views[] = {{{"carriers-both", {40, 290, 720, 110}}, Vector3(0, 60, -1000)},
                 {{"carrier-blue", {200, 180, 440, 320}}, Vector3(-460, 40, -420)},
                 {{"carrier-red", {200, 180, 440, 320}}, Vector3(540, 40, -420)}};
    GameSession game;
    expectPicture(game, {"carrier-before-the-welcome", {150, 250, 500, 300}});
    for (const auto& view : views) {
        game.join(behindTheViewer(view.viewer));
        expectPicture(game, view.picture);
        game.join(behindTheViewer(view.viewer + Vector3(0, 0, 1)));
        expectAnotherPicture(game, view.picture, "the viewer is a unit nearer");
    }
}

TEST(Pictures, ThePlayerStartsBehindTheOwnShipOnTheOwnDeck)
{
    const CommittedPicture start = {"start-red", {80, 300, 640, 300}};
    GameSession game;
    messages::ShipState own;
    own.id = GameSession::ownId;
    own.position = Vector3(500, 0, 0);
    game.join(own);
    expectPicture(game, start);
    own.blueTeam = true;
    game.join(own);
    expectAnotherPicture(game, start, "the own ship is blue");
    own.blueTeam = false;
    own.position.y += 1.0F;
    game.join(own);
    expectAnotherPicture(game, start, "it is a unit higher above the deck");
    own.position.y -= 1.0F;
    game.join(own);
    expectPicture(game, start);
}

TEST(Pictures, ShotsOfBothTeams)
{
    const CommittedPicture shots = {"shots", {270, 210, 260, 180}};
    GameSession game;
    game.join(behindTheViewer(Vector3(0, 0, 3000)));
    game.server.sendTcp(messages::infoFrame(messages::ShotState{30, true, game.inView(-1, 0.5F, 8)}) +
                        messages::infoFrame(messages::ShotState{31, false, game.inView(1, -0.5F, 8)}));
    expectPicture(game, shots);
    game.server.sendTcp(messages::infoFrame(messages::ShotState{31, false, game.inView(1, 0.5F, 8)}));
    expectAnotherPicture(game, shots, "one is a unit higher");
    game.server.sendTcp(messages::infoFrame(messages::ShotState{31, false, game.inView(1, -0.5F, 8)}));
    expectPicture(game, shots);
    game.server.sendTcp(messages::destroyFrame(30) +
                        messages::infoFrame(messages::ShotState{32, false, game.inView(-1, 0.5F, 8)}));
    expectAnotherPicture(game, shots, "both are red");  // the explosion of the blue one is over by then
}

TEST(Pictures, AnExplosionWhereAShotWasDestroyed)
{
    const CommittedPicture explosion = {"explosion", {310, 210, 180, 180}, 300ms};
    const CommittedPicture gone = {"no-explosion", {310, 210, 180, 180}};
    GameSession game;
    game.join(behindTheViewer(Vector3(0, 0, 3000)));
    const auto explode = [&](float distance) {
        game.server.sendTcp(messages::infoFrame(messages::ShotState{40, true, game.inView(0, 0, distance)}));
        std::this_thread::sleep_for(300ms);  // a frame at least, in which the shot takes its place
        game.server.sendTcp(messages::destroyFrame(40));
    };
    explode(40);
    expectPicture(game, explosion);
    expectPicture(game, gone);
    explode(41);
    expectAnotherPicture(game, explosion, "it is a unit farther");
    EXPECT_FALSE(gone.isLike(game.display.screenshot())) << "but it is there";
}
