#include "tests/end_to_end/GameSession.h"

#include <gtest/gtest.h>

#include <csignal>
#include <functional>

using namespace std::chrono_literals;
using support::Clock;
using support::Process;
using support::ScriptedServer;

namespace {

// A person's click needs a window manager, and that needs a moment to take charge of the window.
void closeWindow(GameSession& game)
{
    const std::string display = "DISPLAY=" + game.display.name();
    const Process windowManager({"env", display, "openbox"});
    support::eventually([&] {
        Process({"env", display, "wmctrl", "-x", "-c", "vantor"}).end();
        return game.client->end(500ms) != "still running";
    });
}

std::string endOf(Process& client, const std::string& lastWords)
{
    const std::string end = client.end();
    EXPECT_TRUE(client.hasPrinted(lastWords)) << client.output();
    return end;
}

}  // namespace

TEST(Endings, InPeaceHaveStatusZero)
{
    const struct
    {
        const char* what;
        std::function<void(GameSession&)> happens;
        const char* lastWords;
    } cases[] = {
        {"Escape", [](GameSession& game) { game.leave(); }, ""},
        {"the window is closed", closeWindow, ""},
        {"SIGTERM", [](GameSession& game) { game.client->signal(SIGTERM); }, ""},
        {"the server closes the connection", [](GameSession& game) { game.server.closeTcp(); },
         "TCP connection CLOSED err:End of file\nConnection closed - exiting\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        GameSession game;
        game.join(lonelyShip());
        c.happens(game);
        EXPECT_EQ(endOf(*game.client, c.lastWords), "status 0");
    }
}

TEST(Endings, UdpSilenceEndsTheClientWithStatusOneOnlyAfterTheTimeout)
{
    GameSession game({"--udp-timeout", "2"});
    game.join(lonelyShip());
    EXPECT_EQ(game.client->end(4s), "still running") << "the heartbeat keeps it alive";
    game.server.stopHeartbeat();
    const Clock::time_point silent = Clock::now();
    EXPECT_EQ(endOf(*game.client, "No UDP packet received in 2 - exiting with error Success\n"), "status 1");
    EXPECT_GT(Clock::now() - silent, 1700ms);  // the last beat may lie 100 ms back
    EXPECT_LT(Clock::now() - silent, 5s);
}

TEST(Endings, WithoutAConnectionTheClientEndsWithStatusOneAndSaysWhere)
{
    const std::string closedPort = ScriptedServer().port();  // free a moment ago
    // A label of more than 63 characters is no name: the resolver asks nobody.
    const std::pair<std::string, std::string> cases[] = {
        {"127.0.0.1", closedPort}, {std::string(70, 'x'), "21042"}, {"127.0.0.1", "no-such-service"}};
    for (const auto& [host, port] : cases) {
        Process client(support::clientCommand("", {"--host", host, "--port", port}));
        EXPECT_EQ(endOf(client, "Could not connect to " + host + ":" + port + "\nException: "), "status 1");
    }
}

TEST(Endings, HelpListsTheOptionsInOrderConnectsToNobodyAndEndsWithStatusOne)
{
    const ScriptedServer server;
    Process client(support::clientCommand("", {"--host", "127.0.0.1", "--port", server.port(), "--help"}));
    EXPECT_EQ(client.end(), "status 1");
    EXPECT_FALSE(server.isConnected());
    const std::string text = client.output();
    std::size_t at = 0;
    for (const char* part :
         {"Allowed options:", "--help", "produce help message", "--host", "set game server host", "--port",
          "(=21042)", "set game server port", "--udp-timeout", "(=10)", "exit if no packets received"}) {
        at = text.find(part, at);
        ASSERT_NE(at, std::string::npos) << part << " is missing or out of order in\n" << text;
    }
}

TEST(Endings, AMalformedCommandLineEndsAbnormally)
{
    const std::vector<std::vector<std::string>> cases = {
        {"--no-such-option"}, {"--udp-timeout", "soon"}, {"--port"}};
    for (const std::vector<std::string>& arguments : cases) {
        SCOPED_TRACE(arguments.front());
        Process client(support::clientCommand("", arguments));
        EXPECT_EQ(client.end(), "signal " + std::to_string(SIGABRT)) << client.output();
    }
}
