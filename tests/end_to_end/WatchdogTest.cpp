#include "tests/support/ClientProcess.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/VirtualDisplay.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <future>
#include <map>
#include <string>
#include <vector>

namespace {

using namespace std::chrono_literals;
using support::ClientProcess;
using support::Pipe;
using support::ScriptedServer;
using support::VirtualDisplay;

const std::string farewell = "No UDP packet received in 1 - exiting with error";
constexpr int atOnce = 3;

// More runs than a test suite can wait for, on demand.
int wantedRuns()
{
    const char* runs = std::getenv("VANTOR_TIMEOUT_RUNS");
    return runs == nullptr ? 6 : std::atoi(runs);
}

// A crowd of ships: announced again and again, it keeps both of the client's threads busy.
std::string crowd()
{
    std::string frames = support::welcome(1, 1);
    for (std::uint64_t id = 1; id <= 300; ++id) {
        support::Ship ship;
        ship.id = id;
        ship.blueTeam = id % 2 == 0;
        ship.position =
            Vector3(static_cast<float>(id % 20) * 4.0F - 40.0F, static_cast<float>(id / 20) * 4.0F, 60.0F);
        frames += support::shipInfo(ship);
    }
    return frames;
}

std::string everythingIn(Pipe& pipe)
{
    pipe.writeEnd.close();
    std::string text;
    char piece[4096];
    for (ssize_t n = 0; (n = read(pipe.readEnd.get(), piece, sizeof piece)) > 0;) {
        text.append(piece, static_cast<std::size_t>(n));
    }
    return text;
}

ClientProcess::Options impatientClient(const ScriptedServer& server, const VirtualDisplay& display,
                                       int output)
{
    return {
        {"--host", "127.0.0.1", "--port", server.port(), "--udp-timeout", "1"}, display.name(), output, {}};
}

// One client that gets a heavy TCP stream and no datagram: how it ended, and whether its last words came
// through.
std::string timeOutOnce(const VirtualDisplay& display)
{
    ScriptedServer server;
    server.stopHeartbeat();
    Pipe pipe;
    ClientProcess client(impatientClient(server, display, pipe.writeEnd.get()));
    if (!server.awaitConnection()) {
        return "no connection";
    }
    server.floodTcp(crowd());
    const std::string end = client.end();
    const bool said = everythingIn(pipe).find(farewell) != std::string::npos;
    return end + (said ? ", said why" : ", said nothing");
}

std::map<std::string, int> timeOutOften(int runs)
{
    const VirtualDisplay display;
    std::map<std::string, int> ends;
    for (int i = 0; i < runs; ++i) {
        ++ends[timeOutOnce(display)];
    }
    return ends;
}

// A pipe that nobody reads, with room for so many bytes more.
Pipe nearlyFullPipe(std::size_t room)
{
    Pipe pipe;
    const int flags = fcntl(pipe.writeEnd.get(), F_GETFL);
    const auto capacity = static_cast<std::size_t>(fcntl(pipe.writeEnd.get(), F_GETPIPE_SZ));
    const std::string filling(capacity - room, '.');
    fcntl(pipe.writeEnd.get(), F_SETFL, flags | O_NONBLOCK);
    EXPECT_EQ(write(pipe.writeEnd.get(), filling.data(), filling.size()),
              static_cast<ssize_t>(filling.size()));
    fcntl(pipe.writeEnd.get(), F_SETFL, flags);
    return pipe;
}

// A client whose output nobody reads, with room for so many bytes, and a server that makes it print all the
// time.
std::string timeOutUnread(const VirtualDisplay& display, std::size_t room, const std::string& flood)
{
    ScriptedServer server;
    server.stopHeartbeat();
    const Pipe pipe = nearlyFullPipe(room);
    ClientProcess client(impatientClient(server, display, pipe.writeEnd.get()));
    if (!flood.empty() && server.awaitConnection()) {
        server.floodTcp(flood);
    }
    return client.end(10s);
}

}  // namespace

TEST(Watchdog, UnderLoadEveryTimeoutEndsWithStatusOneAndItsMessage)
{
    const int runs = wantedRuns();
    std::vector<std::future<std::map<std::string, int>>> lanes;
    for (int lane = 0; lane < atOnce; ++lane) {
        lanes.push_back(std::async(std::launch::async, timeOutOften, (runs + lane) / atOnce));
    }
    std::map<std::string, int> ends;
    for (auto& lane : lanes) {
        for (const auto& [end, count] : lane.get()) {
            ends[end] += count;
        }
    }
    for (const auto& [end, count] : ends) {
        RecordProperty(end, count);
        std::printf("%4d times %s\n", count, end.c_str());
    }
    EXPECT_EQ(ends["status 1, said why"], runs);
}

// The main thread hangs in a write; the room decides in which.
TEST(Watchdog, ThatNobodyReadsItsOutputDoesNotKeepTheClientAlive)
{
    const VirtualDisplay display;
    for (const std::size_t room : {0U, 10U, 200U, 4096U}) {
        SCOPED_TRACE("room for " + std::to_string(room) + " bytes");
        EXPECT_EQ(timeOutUnread(display, room, ""), "status 1");
    }
}

// The network thread itself hangs in a write, a complaint about what it received.
TEST(Watchdog, ThatNobodyReadsItsComplaintsDoesNotKeepTheClientAlive)
{
    const VirtualDisplay display;
    EXPECT_EQ(timeOutUnread(display, 4096, support::frame(9, "no such type")), "status 1");
}
