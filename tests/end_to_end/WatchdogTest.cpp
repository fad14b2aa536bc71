#include "peer/ScriptedServer.h"
#include "tests/support/VirtualDisplay.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <future>

using namespace std::chrono_literals;
using support::Process;

namespace {

// Many ships: announced again and again, they keep both of the client's threads busy.
std::string crowd()
{
    std::string frames = messages::welcomeFrame({1}, 1);
    messages::ShipState ship;
    for (ship.id = 1; ship.id <= 300; ++ship.id) {
        ship.position =
            Vector3(static_cast<float>(ship.id % 20) * 4 - 40, static_cast<float>(ship.id / 20) * 4, 60);
        frames += messages::infoFrame(ship);
    }
    return frames;
}

// Sends a client the same bytes over TCP as fast as it takes them, and no datagram. Returns how it ended and
// whether it said why.
std::string timeOut(const support::VirtualDisplay& display, const std::string& flood, int output = -1)
{
    peer::ScriptedServer server;
    server.hasHeartbeat = false;
    std::future<void> flooding;  // ends with the client
    Process client(support::clientCommand(display.name(), {"--host", "127.0.0.1", "--port", server.port(),
                                                           "--udp-timeout", "1"}),
                   output);
    if (!flood.empty()) {
        EXPECT_TRUE(peer::eventually([&] { return server.record().connected; }, 20s));
        flooding = std::async(std::launch::async, [&] {
            while (server.sendTcp(flood)) {
            }
        });
    }
    const std::string end = client.end();
    return end + (client.hasPrinted("No UDP packet received in 1 - exiting with error") ? ", said why" : "");
}

}  // namespace

// VANTOR_TIMEOUT_RUNS asks for more runs than a test suite can wait for.
TEST(Watchdog, EndsTheClientUnderLoad)
{
    const char* wanted = std::getenv("VANTOR_TIMEOUT_RUNS");
    const int runs = wanted == nullptr ? 6 : std::atoi(wanted);
    const auto everyThirdRun = [runs](int first) {
        const support::VirtualDisplay display;
        for (int run = first; run < runs; run += 3) {
            EXPECT_EQ(timeOut(display, crowd()), "status 1, said why") << "run " << run;
        }
    };
    const auto second = std::async(std::launch::async, everyThirdRun, 1);
    const auto third = std::async(std::launch::async, everyThirdRun, 2);
    everyThirdRun(0);
}

// The room in the pipe decides where the main thread hangs. In the last case the network thread hangs in a
// report.
TEST(Watchdog, EndsTheClientWhoseOutputNobodyReads)
{
    const support::VirtualDisplay display;
    const std::pair<std::size_t, std::string> cases[] = {
        {0, ""}, {10, ""}, {200, ""}, {4096, ""}, {4096, peer::rawFrame(9, "no such type")}};
    for (const auto& [room, flood] : cases) {
        SCOPED_TRACE("room for " + std::to_string(room) + " bytes");
        int pipe[2];
        ASSERT_EQ(pipe2(pipe, O_CLOEXEC), 0);
        const std::string filling(static_cast<std::size_t>(fcntl(pipe[1], F_GETPIPE_SZ)) - room, '.');
        EXPECT_EQ(write(pipe[1], filling.data(), filling.size()), static_cast<ssize_t>(filling.size()));
        EXPECT_EQ(timeOut(display, flood, pipe[1]), "status 1");
        close(pipe[0]);
        close(pipe[1]);
    }
}
