// Both threads of the client at work. The thread sanitizer ends it at the first race. Mesa draws without
// threads of its own, as they synchronise by means that the sanitizer does not see.
#include "tests/end_to_end/GameSession.h"

#include <cstdlib>

TEST(Threads, FloodsAndBothEndingsAreFreeOfRaces)
{
    setenv("TSAN_OPTIONS", "halt_on_error=1", 1);
    setenv("LP_NUM_THREADS", "0", 1);
    for (const bool hangsUp : {true, false}) {
        GameSession game({"--udp-timeout", "15"});  // loading is slow here
        game.join(lonelyShip());
        game.flood();
        if (hangsUp) {
            game.server.closeTcp();
        }
        game.server.hasHeartbeat = false;
        EXPECT_EQ(game.client->end(60s), hangsUp ? "status 0" : "status 1");
    }
}
