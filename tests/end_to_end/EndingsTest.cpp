#include "tests/end_to_end/GameSession.h"

#include <gtest/gtest.h>

#include <csignal>
#include <regex>

using namespace std::chrono_literals;
using peer::Clock;
using support::Process;

namespace {

// A person's click needs a window manager, and that needs a moment to take charge of the window.
void closeWindow(GameSession& game)
{
    const std::string display = "DISPLAY=" + game.display.name();
    const Process windowManager({"env", display, "openbox"});
    peer::eventually([&] {
        Process({"env", display, "wmctrl", "-x", "-c", "vantor"}).end();
        return game.client->end(500ms) != "still running";
    });
}

void expectEnd(Process& client, const std::string& end, const std::string& lastWords)
{
    EXPECT_EQ(client.end(), end);
    EXPECT_TRUE(std::regex_search(client.output(), std::regex(lastWords))) << client.output();
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
        expectEnd(*game.client, "status 0", c.lastWords);
    }
}

TEST(Endings, UdpSilenceEndsWithStatusOne)
{
    GameSession game({"--udp-timeout", "2"});
    game.join(lonelyShip());
    EXPECT_EQ(game.client->end(4s), "still running") << "the heartbeat keeps it alive";
    game.server.hasHeartbeat = false;
    const Clock::time_point silent = Clock::now();
    expectEnd(*game.client, "status 1", "No UDP packet received in 2 - exiting with error Success\n");
    EXPECT_GT(Clock::now() - silent, 1700ms);  // the last beat may lie 100 ms back
    EXPECT_LT(Clock::now() - silent, 5s);
}

TEST(Endings, WithoutAGameSayWhy)
{
    const std::string closedPort = peer::ScriptedServer().port();  // free a moment ago
    const std::string nobody(70, 'x');  // too long for a name: the resolver asks nobody
    const std::string aborted = "signal " + std::to_string(SIGABRT);
    const peer::ScriptedServer server;
    const struct
    {
        std::vector<std::string> arguments;
        std::string end, lastWords;
    } cases[] = {
        {{"--port", closedPort},
         "status 1",
         "Could not connect to 127.0.0.1:" + closedPort + "\nException: "},
        {{"--host", nobody}, "status 1", "Could not connect to " + nobody + ":21042\nException: "},
        {{"--port", "no-such-service"}, "status 1", "connect to 127.0.0.1:no-such-service\nException: "},
        {{"--no-such-option"}, aborted, ""},
        {{"--udp-timeout", "soon"}, aborted, ""},
        {{"--port"}, aborted, ""},
        {{"--port", server.port(), "--help"},
         "status 1",
         "Allowed options:[^]*--help[^]*produce help message[^]*--host[^]*set game server "
         "host[^]*--port[^]*=21042"
         "[^]*set game server port[^]*--udp-timeout[^]*=10[^]*exit if no packets received"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments.back());
        Process client(support::clientCommand("", c.arguments));
        expectEnd(client, c.end, c.lastWords);
    }
    EXPECT_FALSE(server.record().connected) << "help connects to nobody";
}
