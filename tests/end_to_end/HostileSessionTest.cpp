// A real client among lies over both transports: it lives, goes on drawing and leaves as it should. What each
// lie does to the scene is tested in tests/hostile.
#include "tests/end_to_end/GameSession.h"
#include "tests/hostile/Attacks.h"

#include <csignal>

TEST(HostileSession, TheClientLivesAndDrawsOn)
{
    GameSession game;
    game.join(lonelyShip());
    for (const auto& [name, frames] : attacks::all) {
        for (const std::string& bytes : frames) {
            game.server.sendTcp(bytes);
            game.server.sendUdp(bytes);
            game.server.sendUdp(bytes.substr(0, bytes.size() / 2));  // a stream would wait for the rest
            game.server.sendUdp(bytes.substr(2));
            std::this_thread::sleep_for(20ms);  // the client draws between any two frames
        }
        const std::size_t before = game.server.record().datagrams.size();
        ASSERT_TRUE(peer::eventually([&] { return game.server.record().datagrams.size() > before + 4; }))
            << name << ": " << game.client->end(1s);
    }
    // nothing behind the zeros is read
    game.server.sendTcp(std::string(2, '\0') + messages::welcomeFrame({0}, 1));
    std::this_thread::sleep_for(1500ms);    // explosions take ids, and last a second
    const Vector3 viewer = {0, 500, 3000};  // away from what the lies left behind
    game.server.sendUdp(messages::infoFrame(shipBehind(viewer)) +
                        messages::welcomeFrame({GameSession::ownId}, 1));
    game.server.sendUdp(parade(viewer));
    game.display.expectImage("fighters", "620x190+90+190");

    game.client->signal(SIGTERM);
    game.server.closeTcp();
    EXPECT_EQ(game.client->end(), "status 0");
}

TEST(HostileSession, AServerMayCloseWhileTheClientLoads)
{
    for (const unsigned bytes : {0U, 1U, 2U, 3U, 20U}) {  // of a frame, before the end
        const support::VirtualDisplay display;
        peer::ScriptedServer server;
        support::Process client(support::clientCommand(display.name(), {"--port", server.port()}));
        EXPECT_TRUE(peer::eventually([&] { return server.record().connected; }));
        std::this_thread::sleep_for(bytes * 50ms);
        server.sendTcp(attacks::ship(7).substr(0, bytes));
        server.closeTcp();
        EXPECT_EQ(client.end(), "status 0") << bytes;
    }
}
