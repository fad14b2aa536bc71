// How the art looks in the game. Where each thing is drawn, and in which colour, is compared by its OpenGL
// calls in tests/engine/golden.
#include "tests/end_to_end/GameSession.h"

TEST(Pictures, CarriersAndFighters)
{
    messages::ShipState own = lonelyShip();
    own.position = Vector3(500, 0, 0);  // on the own deck
    GameSession game;
    game.join(own);
    game.display.expectImage("start",
                             "800x525+0+75");  // below the texts, which look different with another FreeType
    game.join(shipBehind({0, 60, -1000}));
    game.display.expectImage("carriers", "720x110+40+290");
    game.join(shipBehind({-460, 40, -420}));
    game.display.expectImage("carrier", "440x320+200+180");

    const Vector3 farAway = {0, 0, 3000};
    game.join(shipBehind(farAway));
    game.server.sendTcp(parade(farAway));
    game.display.expectImage("fighters", "620x190+90+190");
}
