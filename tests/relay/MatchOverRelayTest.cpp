// The real client, in a match that reaches it through the real relay.
#include "tests/support/VirtualDisplay.h"

#include <gtest/gtest.h>

#include <unistd.h>
#include <csignal>
#include <filesystem>

using namespace std::chrono_literals;
using support::Process;

namespace {

/// A program that prints its port once it is ready.
struct Service
{
    explicit Service(const std::vector<std::string>& command) : process(command)
    {
        EXPECT_TRUE(awaitText("\n")) << command.front();
        const std::string line = process.output().substr(0, process.output().find('\n'));
        port = line.substr(line.rfind(':') + 1);
    }
    bool awaitText(const std::string& text)
    {
        return peer::eventually([&] { return process.hasPrinted(text); }, 40s);
    }

    Process process;
    std::string port;
};

struct Player
{
    explicit Player(const std::string& port)
        : client(support::clientCommand(display.name(), {"--host", "127.0.0.1", "--port", port}))
    {
    }
    /// Whether something changes on the screen, above the own ship and below the texts, within 700 ms. A ship
    /// that is 200 units away covers about 30 pixels.
    bool seesMovement() const
    {
        const std::string files = testing::TempDir() + "seen-" + std::to_string(getpid());
        for (const char* number : {"-1.png", "-2.png"}) {
            display.screenshot("800x340+0+80", files + number);
            std::this_thread::sleep_for(700ms);
        }
        return support::countDifferent(files + "-1.png", files + "-2.png") > 8;
    }

    support::VirtualDisplay display;
    Process client;
};

}  // namespace

TEST(MatchOverRelay, GoesOnDespiteLossAndReordering)
{
    Service server({VANTOR_SERVER, "--port", "0", "--bots", "16", "--seed", "5"});
    Service relay({VANTOR_RELAY, "--to", "127.0.0.1:" + server.port, "--latency", "80", "--jitter", "30",
                   "--loss", "5", "--reorder", "5"});
    EXPECT_TRUE(relay.awaitText("to 127.0.0.1:" + server.port + ", 80±30 ms, loss 5%, reorder 5%, seed 1"));
    Player player(relay.port);
    ASSERT_TRUE(relay.awaitText("connection 1: opened")) << player.client.output();
    int moving = 0;
    for (int pair = 0; pair < 4; ++pair) {
        moving += player.seesMovement() ? 1 : 0;
        std::this_thread::sleep_for(3s);
    }
    EXPECT_GE(moving, 2) << "of 4 pairs of pictures";  // at times all ships are out of sight
    EXPECT_TRUE(player.client.isRunning()) << player.client.output();
    EXPECT_FALSE(relay.process.hasPrinted("connection 1: broken"));
    player.display.xdotool("keydown Escape");
    EXPECT_EQ(player.client.end(), "status 0") << player.client.output();
    relay.process.signal(SIGTERM);
    EXPECT_EQ(relay.process.end(), "status 0");
}

TEST(MatchOverRelay, AReplayEndsWithStatusZero)
{
    Service replay({VANTOR_RELAY, "--replay", VANTOR_RECORDINGS "/short-match.rec"});
    Player player(replay.port);
    ASSERT_TRUE(replay.awaitText("client 1: connected")) << player.client.output();
    EXPECT_TRUE(peer::eventually([&] { return player.seesMovement(); }, 6s));
    EXPECT_EQ(player.client.end(), "status 0") << player.client.output();
    EXPECT_TRUE(replay.awaitText("client 1: played to the end"));
}

TEST(RelayProgram, NamesABadRecordingAndEndsWithStatusOne)
{
    const std::string path = testing::TempDir() + "no-recording-" + std::to_string(getpid());
    const std::pair<std::string, std::string> cases[] = {
        {"set -o pipefail; (ulimit -f 0; \"$0\" --to 127.0.0.1:1 --record \"$1\") 2>&1 | cat",
         "cannot record into " + path + ": File too large\n"},
        {"echo >\"$1\"; exec \"$0\" --replay \"$1\"", path + " is no recording of this version\n"}};
    for (const auto& [command, message] : cases) {
        Process relay({"bash", "-c", command, VANTOR_RELAY, path});
        EXPECT_EQ(relay.end(), "status 1");
        EXPECT_EQ(relay.output(), "vantor-relay: " + message);
    }
    std::filesystem::remove(path);
}
