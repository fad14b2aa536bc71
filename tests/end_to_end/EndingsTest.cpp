#include "tests/end_to_end/GameSession.h"

#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <vector>

namespace {

using namespace std::chrono_literals;
using support::ClientProcess;
using support::Clock;
using support::ScriptedServer;

// A port that was free a moment ago.
std::string closedPort()
{
    return ScriptedServer().port();
}

}  // namespace

TEST(Endings, EscapeEndsWithStatusZero)
{
    GameSession game;
    EXPECT_EQ(game.leave(), "status 0");
}

TEST(Endings, AClosedWindowEndsWithStatusZero)
{
    GameSession::Options options;
    options.windowManager = true;
    GameSession game(options);
    game.join(lonelyShip());
    game.display.closeWindow("vantor");
    EXPECT_EQ(game.client->end(), "status 0");
}

TEST(Endings, SigtermEndsLikeAClosedWindow)
{
    GameSession game;
    game.client->signal(SIGTERM);
    EXPECT_EQ(game.client->end(), "status 0");
}

TEST(Endings, AServerThatClosesTheConnectionEndsTheClientWithStatusZero)
{
    GameSession game;
    game.join(lonelyShip());
    game.server.closeTcp();
    EXPECT_EQ(game.client->end(), "status 0");
    EXPECT_TRUE(
        game.client->hasPrinted("TCP connection CLOSED err:End of file\nConnection closed - exiting\n"));
}

TEST(Endings, UdpSilenceEndsTheClientWithStatusOneOnlyAfterTheTimeout)
{
    GameSession::Options options;
    options.arguments = {"--udp-timeout", "2"};
    GameSession game(options);
    game.join(lonelyShip());
    EXPECT_EQ(game.client->end(4s), "still running") << "the heartbeat keeps it alive";
    game.server.stopHeartbeat();
    const Clock::time_point silent = Clock::now();
    EXPECT_EQ(game.client->end(), "status 1");
    EXPECT_GT(Clock::now() - silent, 1700ms);  // the last beat may lie 100 ms back
    EXPECT_LT(Clock::now() - silent, 5s);
    EXPECT_TRUE(game.client->hasPrinted("No UDP packet received in 2 - exiting with error Success\n"));
}

TEST(Endings, WithoutAConnectionTheClientEndsWithStatusOneAndSaysWhere)
{
    struct Case
    {
        std::string host, port;
    };
    // A label of more than 63 characters is no name: the resolver asks nobody.
    for (const Case& c : {Case{"127.0.0.1", closedPort()}, Case{std::string(70, 'x'), "21042"},
                          Case{"127.0.0.1", "no-such-service"}}) {
        SCOPED_TRACE(c.host + ":" + c.port);
        ClientProcess client({{"--host", c.host, "--port", c.port}, "", -1, {}});
        EXPECT_EQ(client.end(), "status 1");
        EXPECT_TRUE(client.hasPrinted("Could not connect to " + c.host + ":" + c.port + "\nException: "))
            << client.output();
    }
}

TEST(Endings, HelpListsTheOptionsInOrderConnectsToNobodyAndEndsWithStatusOne)
{
    ScriptedServer server;
    ClientProcess client({{"--host", "127.0.0.1", "--port", server.port(), "--help"}, "", -1, {}});
    EXPECT_EQ(client.end(), "status 1");
    EXPECT_FALSE(server.wasConnected());
    const std::string text = client.output();
    std::size_t at = 0;
    for (const char* part : {"Allowed options:", "--help", "produce help message", "--host",
                             "set game server host", "--port", "(=21042)", "set game server port",
                             "--udp-timeout", "(=10)", "exit if no packets received", "\n\n"}) {
        const std::size_t found = text.find(part, at);
        ASSERT_NE(found, std::string::npos) << part << " is missing or out of order in\n" << text;
        at = found;
    }
}

TEST(Endings, AMalformedCommandLineEndsAbnormally)
{
    const std::vector<std::vector<std::string>> commandLines = {
        {"--no-such-option"}, {"--udp-timeout", "soon"}, {"--port"}};
    for (const std::vector<std::string>& arguments : commandLines) {
        SCOPED_TRACE(arguments.front());
        ClientProcess client({arguments, "", -1, {}});
        EXPECT_EQ(client.end(), "signal " + std::to_string(SIGABRT)) << client.output();
    }
}

TEST(Endings, WithoutADisplayTheClientSaysSoAndEndsWithStatusOneOrTwo)
{
    ScriptedServer server;
    ClientProcess client({{"--host", "127.0.0.1", "--port", server.port()}, "", -1, {}});
    const std::string end = client.end();
    if (end == "status 1") {
        EXPECT_TRUE(client.hasPrinted("Couldn't initialize SDL: ")) << client.output();
    } else {
        EXPECT_EQ(end, "status 2");
        EXPECT_TRUE(client.hasPrinted("Couldn't set 800x600 OpenGL video mode: ")) << client.output();
    }
}
