#include "PracticeServer/PracticeServer.h"

#include "tests/PracticeServer/TestClient.h"

#include <gtest/gtest.h>
#include <boost/system/system_error.hpp>

#include <algorithm>
#include <limits>
#include <set>

using namespace practice;
using namespace std::chrono_literals;

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

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
        ServerConfig config;
        config.port = 0;
        config.bots = bots;
        config.mostClients = mostClients;
        config.log = [this](const std::string& line) { log.push_back(line); };
        server = std::make_unique<PracticeServer>(io, config);
        server->start();
    }
    void run(std::chrono::milliseconds time)
    {
        runUntil([] { return false; }, time);
    }
    /// False if the time ran out first.
    template <typename Condition>
    bool runUntil(Condition condition, std::chrono::milliseconds time = 5s)
    {
        const auto end = std::chrono::steady_clock::now() + time;
        while (!condition()) {
            if (std::chrono::steady_clock::now() >= end) {
                return false;
            }
            io.run_for(5ms);
            for (const auto& client : clients) {
                client->poll();
            }
        }
        return true;
    }
    TestClient& join()
    {
        clients.push_back(std::make_unique<TestClient>(server->port()));
        TestClient& client = *clients.back();
        EXPECT_TRUE(runUntil([&client] { return client.isWelcome(); }));
        run(30ms);  // for the rest of the introduction
        return client;
    }
};

bool destroyed(const TestClient& client, std::uint64_t id)
{
    const auto all = messagesOf<Vantor::ObjectDestroy>(client.reliable, MessageTypes::OBJECT_DESTROY);
    return std::any_of(all.begin(), all.end(), [id](const Vantor::ObjectDestroy& d) { return d.id() == id; });
}

}  // namespace

TEST_F(Server, WelcomesAClientFirstAndThenTellsOfEveryShip)
{
    open(4);
    const TestClient& client = join();
    ASSERT_EQ(client.reliable[0].type, MessageTypes::WELCOME);
    EXPECT_GE(client.welcome().id(), Match::firstId);
    EXPECT_NE(client.welcome().qport(), 0U);
    EXPECT_LT(client.welcome().qport(), 65536U);
    std::set<std::uint64_t> ships;
    for (const Vantor::ObjectInfo& info : client.infos()) {
        if (info.objecttype() == 0) {
            ships.insert(info.id());
            EXPECT_TRUE(info.playerdata().has_blueteam() && info.playerdata().has_name());
            EXPECT_TRUE(info.playerdata().has_redteamscore() && info.playerdata().has_blueteamscore());
        }
    }
    EXPECT_EQ(ships.size(), 5U);
    EXPECT_EQ(ships.count(client.welcome().id()), 1U);
}

TEST_F(Server, SendsSnapshotsTwentyTimesASecondOnceItKnowsTheAddress)
{
    open(30);
    TestClient& client = join();
    run(200ms);
    EXPECT_TRUE(client.datagrams.empty());
    client.steer({});
    ASSERT_TRUE(runUntil([&client] { return !client.datagrams.empty(); }));
    run(2s);
    std::map<std::uint32_t, std::set<std::uint64_t>> snapshots;
    for (const std::string& datagram : client.datagrams) {
        EXPECT_LE(datagram.size(), 1200U);
    }
    for (const Vantor::ObjectUpdate& update : client.updates()) {
        EXPECT_TRUE(update.has_position() && update.has_orientation());
        EXPECT_TRUE(snapshots[update.timestamp()].insert(update.id()).second)
            << "one state per ship and snapshot";
    }
    EXPECT_NEAR(static_cast<double>(snapshots.size()), 40.0, 12.0);  // the machine may be busy
    for (const auto& [timestamp, ships] : snapshots) {
        EXPECT_EQ(timestamp % 50U, 0U);
        EXPECT_GT(ships.size(), 15U);
    }
}

TEST_F(Server, SteersTheClientsShip)
{
    open(0);
    TestClient& client = join();
    const std::uint64_t own = client.welcome().id();
    const float start = client.positionOf(own).z;
    client.steer({Quaternion(), control::forward});
    EXPECT_TRUE(runUntil([&] { return client.positionOf(own).z > start + 5.0F; }));
}

TEST_F(Server, AClientThatFallsSilentLetsGoOfTheControls)
{
    open(0);
    TestClient& client = join();
    client.steer({Quaternion(), control::fire});
    run(2500ms);
    const auto infos = client.infos();
    const auto shots =
        std::count_if(infos.begin(), infos.end(), [](const auto& i) { return i.objecttype() == 1; });
    EXPECT_GE(shots, 3);
    EXPECT_LE(shots, 6);
}

TEST_F(Server, DatagramsThatAreNoSteeringOfTheClientsChangeNothing)
{
    open(0);
    TestClient& client = join();
    const std::uint64_t own = client.welcome().id();
    const Vector3 start = client.positionOf(own);
    const std::uint16_t qport = client.qport();
    const auto wrongTag = static_cast<std::uint16_t>(qport ^ 0x0101U);
    const std::string valid = steeringFrame(qport, {Quaternion(), control::forward});
    std::string wrongType = valid;
    wrongType[4] = 5;
    const std::pair<const char*, std::string> cases[] = {
        {"another qport", steeringFrame(wrongTag, {Quaternion(), control::forward})},
        {"no orientation", steeringFrame(qport, {Quaternion(notANumber, 0, 0, 0), control::forward})},
        {"zero orientation", steeringFrame(qport, {Quaternion(0, 0, 0, 0), control::forward})},
        {"another type", wrongType},
        {"cut short", valid.substr(0, valid.size() - 1)},
        {"no length", valid.substr(0, 2) + std::string(2, '\0') + valid.substr(4)},
        {"noise", std::string(3000, '\x5A')},
        {"nothing", ""},
    };
    for (const auto& [name, bytes] : cases) {
        SCOPED_TRACE(name);
        client.sendDatagram(bytes);
        run(120ms);
        EXPECT_TRUE(client.datagrams.empty());
    }
    client.steer({});
    ASSERT_TRUE(runUntil([&client] { return !client.datagrams.empty(); }));
    EXPECT_EQ(client.positionOf(own), start);
}

TEST_F(Server, AKnownQportFromAnotherAddressChangesNothing)
{
    open(0);
    TestClient& client = join();
    TestClient& intruder = join();
    client.steer({});
    ASSERT_TRUE(runUntil([&client] { return !client.datagrams.empty(); }));
    intruder.sendDatagram(steeringFrame(client.qport(), {Quaternion(), control::forward}));
    run(200ms);
    EXPECT_TRUE(intruder.datagrams.empty());
    const std::size_t before = client.datagrams.size();
    run(200ms);
    EXPECT_GT(client.datagrams.size(), before);
    const auto infos = client.infos();
    EXPECT_EQ(client.positionOf(client.welcome().id()).z, infos[0].position().z());
}

TEST_F(Server, NoiseOnTheStreamIsIgnoredAndFramesOnItCount)
{
    open(0);
    TestClient& client = join();
    TestClient& noisy = join();
    client.sendStream(steeringFrame(client.qport(), {Quaternion(), control::backward}));
    noisy.sendStream(steeringFrame(client.qport(), {Quaternion(), control::up}) +
                     std::string(100'000, '\xEE'));
    run(100ms);
    client.steer({});
    noisy.steer({});
    EXPECT_TRUE(runUntil([&] { return !client.datagrams.empty() && !noisy.datagrams.empty(); }));
    const std::uint64_t own = client.welcome().id();
    EXPECT_LT(client.positionOf(own).z, client.infos()[0].position().z());
    EXPECT_EQ(client.positionOf(own).y, client.infos()[0].position().y());
    EXPECT_FALSE(noisy.serverHungUp);
}

TEST_F(Server, TwoClientsSeeEachOtherMoveAndLeave)
{
    open(0);
    TestClient& first = join();
    TestClient& second = join();
    const std::uint64_t other = second.welcome().id();
    EXPECT_NE(first.qport(), second.qport());
    EXPECT_NE(first.welcome().playerdata().blueteam(), second.welcome().playerdata().blueteam());
    first.steer({});
    second.steer({Quaternion(), control::up});
    const float start = first.positionOf(other).y;
    EXPECT_TRUE(runUntil([&] { return first.positionOf(other).y > start + 2.0F; }));
    EXPECT_NO_THROW(second.positionOf(first.welcome().id()));
    second.hangUp();
    EXPECT_TRUE(runUntil([&] { return destroyed(first, other); }));
    EXPECT_EQ(log, (std::vector<std::string>{"join Pilot 1 (blue)", "join Pilot 2 (red)", "leave Pilot 2"}));
}

TEST_F(Server, TurnsPlayersAwayWhenItIsFull)
{
    open(0, 1);
    join();
    clients.push_back(std::make_unique<TestClient>(server->port()));
    EXPECT_TRUE(runUntil([this] { return clients.back()->serverHungUp; }));
    EXPECT_TRUE(clients.back()->reliable.empty());
    EXPECT_EQ(log.size(), 2U);
}

TEST_F(Server, StopHangsUpAndLeavesNoWork)
{
    open(2);
    TestClient& client = join();
    server->stop();
    EXPECT_TRUE(runUntil([&client] { return client.serverHungUp; }));
    io.run_for(2s);
    EXPECT_TRUE(io.stopped());
}

TEST_F(Server, APortInUseIsRefused)
{
    open(0);
    ServerConfig second;
    second.port = server->port();
    EXPECT_THROW(PracticeServer(io, second), boost::system::system_error);
}
