// How the client ends without a player's wish. The watchdog must end it whatever its threads are doing.
#include "tests/end_to_end/GameSession.h"
#include "tests/hostile/Attacks.h"

#include <fcntl.h>
#include <unistd.h>

#include <future>
#include <regex>

using peer::Clock;
using support::Process;

namespace {

// Sends the same bytes until the client is gone: over UDP, or over TCP as fast as it takes them.
std::future<void> flood(peer::ScriptedServer& server, const std::string& bytes, bool isUdp = false)
{
    return std::async(std::launch::async, [&server, bytes, isUdp] {
        while (!bytes.empty() && server.sendTcp(isUdp ? "" : bytes)) {
            if (isUdp) {
                server.sendUdp(bytes);
                std::this_thread::sleep_for(10us);  // others need the server's lock, too
            }
        }
    });
}

}  // namespace

TEST(Endings, UdpSilenceEndsAlsoABusyClient)
{
    const std::string ships = parade({0, 4, 60});  // announced again and again, they keep both threads busy
    for (const std::string& load : {std::string(), ships}) {
        GameSession game({"--udp-timeout", "8"});
        game.join(lonelyShip());
        EXPECT_EQ(game.client->end(9s), "still running") << "the heartbeat keeps it alive";
        const auto flooding = flood(game.server, load);
        game.server.hasHeartbeat = false;
        const Clock::time_point silent = Clock::now();
        EXPECT_EQ(game.client->end(), "status 1");
        EXPECT_GT(Clock::now() - silent, 7700ms);  // the last beat may lie 100 ms back
        EXPECT_TRUE(game.client->hasPrinted("No UDP packet received in 8 - exiting with error Success\n"));
    }
}

TEST(Endings, AFloodedClientDrawsOnAndLeaves)
{
    std::string small;
    while (small.size() < 1200) {
        small += messages::destroyFrame(8);
    }
    const std::string large = attacks::ship(8, std::string(60000, 'n'));
    // the bytes, and whether they come as datagrams
    const std::pair<std::string, bool> loads[] = {{small, false}, {large, false}, {small, true}};
    for (const auto& [load, isUdp] : loads) {
        GameSession game;
        game.join(lonelyShip());
        const auto flooding = flood(game.server, load, isUdp);
        const std::size_t before = game.server.record().datagrams.size();
        EXPECT_TRUE(
            peer::eventually([&] { return game.server.record().datagrams.size() > before + 50; }, 30s))
            << load.size() << isUdp;
        game.client->signal(SIGTERM);
        EXPECT_EQ(game.client->end(5s), "status 0");
    }
}

// The room in the pipe decides where the main thread hangs. In the third case the network thread hangs in a
// report. In the last case the reader is gone, so nothing hangs.
TEST(Endings, UdpSilenceEndsAClientWhoseOutputNobodyReads)
{
    const support::VirtualDisplay display;
    const std::tuple<std::size_t, std::string, bool> cases[] = {
        {0, "", true}, {200, "", true}, {4096, peer::rawFrame(9, "no such type"), true}, {0, "", false}};
    for (const auto& [room, load, hasReader] : cases) {
        SCOPED_TRACE("room for " + std::to_string(room) + " bytes");
        int pipe[2];
        ASSERT_EQ(pipe2(pipe, O_CLOEXEC), 0);
        const std::string filling(static_cast<std::size_t>(fcntl(pipe[1], F_GETPIPE_SZ)) - room, '.');
        EXPECT_EQ(write(pipe[1], filling.data(), filling.size()), static_cast<ssize_t>(filling.size()));
        dup2(pipe[hasReader ? 0 : 1], pipe[0]);
        peer::ScriptedServer server;
        server.hasHeartbeat = false;
        auto command =
            support::clientCommand(display.name(), {"--port", server.port(), "--udp-timeout", "1"});
        const std::string errors = testing::TempDir() + "vantor-errors-" + std::to_string(getpid());
        if (room == 0) {  // elsewhere standard error is stuck, too
            command.insert(command.begin(), {"sh", "-c", "exec \"$@\" 2>\"$0\"", errors});
        }
        Process client(command, pipe[1]);
        EXPECT_TRUE(load.empty() || peer::eventually([&] { return server.record().connected; }));
        const auto flooding = flood(server, load);
        EXPECT_EQ(client.end(), "status 1");
        if (room == 0 && hasReader) {
            EXPECT_EQ(support::outputOf({"cat", errors}), "The client did not end in time\n");
        }
        unlink(errors.c_str());
        close(pipe[0]);
        close(pipe[1]);
    }
}

TEST(Endings, WithoutAGameSayWhy)
{
    const std::string nobody(70, 'x');  // too long for a name: the resolver asks nobody
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"--host", nobody}, "Could not connect to " + nobody + ":21042\nException: "},
        {{"--help"},
         "Allowed options:[^]*--help[^]*produce help message[^]*--host[^]*=127.0.0.1[^]*set game server "
         "host[^]*--port[^]*=21042[^]*set game server port[^]*--udp-timeout[^]*=10[^]*exit if no packets"}};
    for (const auto& [arguments, text] : cases) {
        Process client(support::clientCommand("", arguments));
        EXPECT_EQ(client.end(), "status 1");
        EXPECT_TRUE(std::regex_search(client.output(), std::regex(text))) << client.output();
    }
}
