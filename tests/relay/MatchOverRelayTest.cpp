// The programs: a recorded match that reaches the real client through a bad network.
#include "tests/support/VirtualDisplay.h"

#include <gtest/gtest.h>

#include <unistd.h>
#include <csignal>
#include <filesystem>

using namespace std::chrono_literals;
using support::Process;

namespace {

bool awaitText(const Process& process, const std::string& text)
{
    return peer::eventually([&] { return process.hasPrinted(text); }, 40s);
}

std::string portOf(const Process& relay)
{
    EXPECT_TRUE(awaitText(relay, "\n"));
    const std::string line = relay.output().substr(0, relay.output().find('\n'));
    return line.substr(line.rfind(':') + 1);
}

}  // namespace

TEST(RelayProgram, PlaysAMatchToTheClientOverABadNetwork)
{
    const Process replay({VANTOR_RELAY, "--replay", VANTOR_TESTS "relay/recordings/short-match.rec"});
    const std::string server = "127.0.0.1:" + portOf(replay);
    // The recording has room for a kilobyte; the match goes on without it.
    const std::string recording = testing::TempDir() + "small-recording-" + std::to_string(getpid());
    Process relay({"bash", "-c", "ulimit -f 1; exec \"$0\" \"$@\"", VANTOR_RELAY, "--to", server, "--network",
                   "mobile", "--record", recording});
    const support::VirtualDisplay display;
    Process client(support::clientCommand(display.name(), {"--host", "127.0.0.1", "--port", portOf(relay)}));
    EXPECT_TRUE(awaitText(relay, "to " + server + ", 80±30 ms, loss 5%, duplicate 1%, reorder 2%, seed 1"));
    ASSERT_TRUE(awaitText(replay, "client 1: connected")) << client.output();
    EXPECT_EQ(client.end(), "status 0") << client.output();
    EXPECT_TRUE(awaitText(replay, "client 1: played to the end"));
    EXPECT_TRUE(awaitText(relay, "connection 1: closed"));
    const std::string text = relay.output(), line = "the recording ends here: cannot record into ";
    EXPECT_LT(text.find(line), text.size());
    EXPECT_EQ(text.find(line), text.rfind(line)) << "it is logged once";
    relay.signal(SIGTERM);
    EXPECT_EQ(relay.end(), "status 1");
    std::filesystem::remove(recording);
}
