// How the art looks in the game. Where each thing is drawn, and in which colour, is compared by its OpenGL
// calls in tests/engine/golden.
#include "tests/end_to_end/GameSession.h"
#include "tests/support/GoldenImage.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;
using messages::ShipState;
using messages::ShotState;
using support::expectImage;

namespace {

const Vector3 farAway = {0, 0, 3000};  // from the carriers

}  // namespace

TEST(Pictures, ThePlayerStartsOnTheOwnDeck)
{
    ShipState own = lonelyShip();
    own.position = Vector3(500, 0, 0);
    own.health = 87.5F;
    own.redScore = 42;
    own.blueScore = 7;
    GameSession game;
    game.join(own);
    expectImage(game.display, {"start", "800x575+0+25"});  // below the line of the frame rate
}

TEST(Pictures, Carriers)
{
    GameSession game;
    game.join(shipBehind({0, 60, -1000}));
    expectImage(game.display, {"carriers", "720x110+40+290"});
    game.join(shipBehind({-460, 40, -420}));
    expectImage(game.display, {"carrier", "440x320+200+180"});
}

// Half of them are announced over UDP. One moves to its place, far enough to jump, and a ninth one goes.
TEST(Pictures, FightersComeMoveAndGo)
{
    GameSession game;
    game.join(shipBehind(farAway));
    std::vector<ShipState> ships = parade(farAway);
    ShipState passing = ships[0];
    passing.id = 99;
    passing.position.y -= 1.5F;
    const Vector3 target = ships[7].position;
    ships[7].position.y += 15.0F;
    for (const ShipState& ship : ships) {
        const std::string info = messages::infoFrame(ship);
        ship.blueTeam ? game.server.sendUdp(info) : void(game.server.sendTcp(info));
    }
    game.server.sendTcp(messages::infoFrame(passing));
    std::this_thread::sleep_for(300ms);
    game.server.sendTcp(messages::destroyFrame(passing.id));
    std::string updates;
    for (const std::uint32_t time : {1050U, 1100U}) {  // the second one stops it
        updates += messages::updateFrame(ships[7].id, time, target, ships[7].orientation);
    }
    game.server.sendUdp(updates);
    expectImage(game.display, {"fighters", "620x190+90+190"});
}

TEST(Pictures, ShotsAndAnExplosion)
{
    GameSession game;
    game.join(shipBehind(farAway));
    const auto show = [&](std::uint64_t id, bool blueTeam, Vector3 place) {
        game.server.sendTcp(messages::infoFrame(ShotState{id, blueTeam, farAway + place}));
    };
    show(30, true, {2, 0.5F, 8});
    show(31, false, {-2, -0.5F, 8});
    const auto explode = [&] {  // it lasts a second
        std::this_thread::sleep_for(1200ms);
        show(32, true, {0, 0, 40});
        std::this_thread::sleep_for(300ms);  // a shot takes its place in its first frame
        game.server.sendTcp(messages::destroyFrame(32));
        std::this_thread::sleep_for(100ms);
    };
    expectImage(game.display, {"shots-and-explosion", "360x180+220+210"}, explode);
}
