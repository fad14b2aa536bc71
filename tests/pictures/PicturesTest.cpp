// How the art looks in the game. Where each thing is drawn, and in which colour, is compared by its OpenGL
// calls in tests/engine/golden.
#include "tests/end_to_end/GameSession.h"

TEST(Pictures, CarriersFightersShotsAndAnExplosion)
{
    messages::ShipState own = lonelyShip();
    own.position = Vector3(500, 0, 0);  // on the own deck
    own.health = 87.5F;
    own.redScore = 42;
    own.blueScore = 7;
    GameSession game;
    game.join(own);
    game.display.expectImage("start", "800x575+0+25");  // below the line of the frame rate
    game.join(shipBehind({0, 60, -1000}));
    game.display.expectImage("carriers", "720x110+40+290");
    game.join(shipBehind({-460, 40, -420}));
    game.display.expectImage("carrier", "440x320+200+180");

    const Vector3 farAway = {0, 0, 3000};
    game.join(shipBehind(farAway));
    game.server.sendTcp(parade(farAway));
    game.display.expectImage("fighters", "620x190+90+190");
    for (std::uint64_t id = 20; id < 28; ++id) {
        game.server.sendTcp(messages::destroyFrame(id));
    }

    const auto show = [&](std::uint64_t id, bool blueTeam, Vector3 place) {
        game.server.sendTcp(messages::infoFrame(messages::ShotState{id, blueTeam, farAway + place}));
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
    game.display.expectImage("shots-and-explosion", "360x180+220+210", explode);
}
