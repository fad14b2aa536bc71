#include "PracticeServer/PracticeServer.h"

#include "tests/PracticeServer/TestClient.h"

#include <gtest/gtest.h>
#include <boost/system/system_error.hpp>

#include <algorithm>
#include <limits>
#include <map>
#include <set>

using namespace practice;
using namespace std::chrono_literals;

namespace {

/// A server and its clients in one thread, over real sockets.
class Server : public testing::Test
{
protected:
    boost::asio::io_context io;
    std::vector<std::string> log;
    std::unique_ptr<PracticeServer> server;
    std::vector<std::unique_ptr<TestClient>> clients;

    void open(unsigned bots, std::size_t mostClients = 32)
    {
        const auto note = [this](const std::string& line) { log.push_back(line); };
        server = std::make_unique<PracticeServer>(io, ServerConfig{0, bots, 1, mostClients, note});
        server->start();
    }
    /// False if the time ran out first.
    bool runUntil(const std::function<bool()>& condition, std::chrono::milliseconds time = 5s)
    {
        const auto end = std::chrono::steady_clock::now() + time;
        while (!condition() && std::chrono::steady_clock::now() < end) {
            io.run_for(5ms);
            for (const auto& client : clients) {
                client->poll();
            }
        }
        return condition();
    }
    void run(std::chrono::milliseconds time)
    {
        runUntil([] { return false; }, time);
    }
    TestClient& join()
    {
        TestClient& client = *clients.emplace_back(std::make_unique<TestClient>(server->port()));
        EXPECT_TRUE(runUntil([&client] { return client.id() != 0; }));
        run(30ms);  // for the rest of the introduction
        return client;
    }
};

}  // namespace

TEST_F(Server, WelcomesAClientFirstAndThenTellsOfEveryShip)
{
    open(4);
    const TestClient& client = join();
    EXPECT_EQ(client.heard.types[0], MessageTypes::WELCOME);
    EXPECT_GE(client.id(), Match::firstId);
    EXPECT_NE(client.heard.welcome.qport(), 0U);
    EXPECT_LT(client.heard.welcome.qport(), 65536U);
    std::set<std::uint64_t> ships;
    for (const Vantor::ObjectInfo& info : client.heard.infos) {
        if (info.objecttype() == 0) {
            ships.insert(info.id());
            EXPECT_TRUE(info.playerdata().has_blueteam() && info.playerdata().has_name());
            EXPECT_TRUE(info.playerdata().has_redteamscore() && info.playerdata().has_blueteamscore());
        }
    }
    EXPECT_EQ(ships.size(), 5U);
    EXPECT_EQ(ships.count(client.id()), 1U);
}

TEST_F(Server, SendsSnapshotsTwentyTimesASecondOnceItKnowsTheAddress)
{
    open(30);
    TestClient& client = join();
    run(200ms);
    EXPECT_TRUE(client.datagrams.empty());
    client.steer({});
    ASSERT_TRUE(runUntil([&] { return !client.datagrams.empty(); }));
    run(2s);
    for (const std::string& datagram : client.datagrams) {
        EXPECT_LE(datagram.size(), 1200U);
    }
    std::map<std::uint32_t, std::set<std::uint64_t>> snapshots;
    for (const Vantor::ObjectUpdate& update : client.heard.updates) {
        EXPECT_TRUE(update.has_position() && update.has_orientation());
        EXPECT_TRUE(snapshots[update.timestamp()].insert(update.id()).second) << "a second state";
    }
    EXPECT_NEAR(static_cast<double>(snapshots.size()), 40.0, 12.0);  // the machine may be busy
    for (const auto& [timestamp, ships] : snapshots) {
        EXPECT_EQ(timestamp % 50U, 0U);
        EXPECT_GT(ships.size(), 15U);
    }
}

TEST_F(Server, AClientThatFallsSilentLetsGoOfTheControls)
{
    open(0);
    TestClient& client = join();
    client.steer({Quaternion(), control::fire});
    run(2500ms);
    const auto& infos = client.heard.infos;
    const auto shots =
        std::count_if(infos.begin(), infos.end(), [](const auto& info) { return info.objecttype() == 1; });
    EXPECT_GE(shots, 3);
    EXPECT_LE(shots, 6);
}

TEST_F(Server, OnlyTheClientItselfSteersItsShipAndNoNoiseDoes)
{
    open(0);
    TestClient& client = join();
    TestClient& intruder = join();
    const Vector3 start = client.position();
    const std::string valid = steeringFrame(client.qport(), {Quaternion(), control::forward});
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const std::string& bytes :
         {steeringFrame(static_cast<std::uint16_t>(client.qport() ^ intruder.qport() ^ 1U), {}),
          steeringFrame(client.qport(), {Quaternion(nan, 0, 0, 0), control::forward}),
          std::string(3000, '\x5A'), std::string()}) {
        client.sendDatagram(bytes);
        run(60ms);
        EXPECT_TRUE(client.datagrams.empty());
    }
    client.steer({});
    ASSERT_TRUE(runUntil([&] { return !client.datagrams.empty(); }));
    intruder.sendDatagram(valid);  // the right qport, from another address or on another stream
    intruder.sendStream(valid + std::string(100'000, '\xEE'));
    run(200ms);
    EXPECT_TRUE(intruder.datagrams.empty());
    EXPECT_FALSE(intruder.serverHungUp);
    EXPECT_EQ(client.position(), start);
    client.sendStream(valid);
    EXPECT_TRUE(runUntil([&] { return client.position().z > start.z; }));
}

TEST_F(Server, TwoClientsSeeEachOtherMoveAndLeave)
{
    open(0);
    TestClient& first = join();
    TestClient& second = join();
    EXPECT_NE(first.qport(), second.qport());
    first.steer({});
    second.steer({Quaternion(), control::up});
    const float start = second.position().y;
    EXPECT_TRUE(runUntil([&] { return first.heard.positionOf(second.id()).y > start + 2.0F; }));
    second.hangUp();
    EXPECT_TRUE(runUntil([&] { return !first.heard.destroys.empty(); }));
    EXPECT_EQ(first.heard.destroys.at(0).id(), second.id());
    EXPECT_EQ(log, (std::vector<std::string>{"join Pilot 1 (blue)", "join Pilot 2 (red)", "leave Pilot 2"}));
}

TEST_F(Server, KeepsItsPortTurnsPlayersAwayWhenItIsFullAndStopLeavesNoWork)
{
    open(2, 1);
    const TestClient& client = join();
    TestClient late(server->port());
    EXPECT_TRUE(runUntil([&] { return late.poll(), late.serverHungUp; }));
    EXPECT_TRUE(late.heard.types.empty());
    EXPECT_EQ(log.size(), 2U);
    EXPECT_THROW(PracticeServer(io, ServerConfig{server->port()}), boost::system::system_error);
    server->stop();
    EXPECT_TRUE(runUntil([&] { return client.serverHungUp; }));
    io.run_for(2s);
    EXPECT_TRUE(io.stopped());
}
