#include "peer/HeadlessClient.h"
#include "server/net/PracticeServer.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

using namespace practice;
using namespace std::chrono_literals;
using namespace std::string_literals;

namespace {

using Client = peer::HeadlessClient;

/// A server and its clients in one thread. Each test also fails if the server breaks the protocol.
class Server : public testing::Test
{
protected:
    boost::asio::io_context io;
    ServerConfig config;  ///< to be changed before `open`
    std::vector<std::string> log;
    std::unique_ptr<PracticeServer> server;
    std::vector<std::unique_ptr<Client>> clients;

    void TearDown() override
    {
        for (const auto& client : clients) {
            EXPECT_TRUE(client->checker.faults().empty()) << client->checker.faults().begin()->first;
        }
    }
    void open(unsigned bots)
    {
        config.port = 0;
        config.log = [this](const std::string& line) { log.push_back(line); };
        config.bots = bots;
        server = std::make_unique<PracticeServer>(io, config);
        server->start();
    }
    /// Returns false if the time ran out first.
    bool runUntil(const std::function<bool()>& condition, peer::Clock::duration time = 10s)
    {
        const auto end = peer::Clock::now() + time;
        while (!condition() && peer::Clock::now() < end) {
            io.run_for(5ms);
            for (const auto& client : clients) {
                client->poll();
            }
        }
        return condition();
    }
    void run(peer::Clock::duration time)
    {
        runUntil([] { return false; }, time);
    }
    Client& connect() { return *clients.emplace_back(std::make_unique<Client>(io, server->port())); }
    Client& join()
    {
        Client& client = connect();
        EXPECT_TRUE(runUntil([&client] { return client.id() != 0; }));
        run(30ms);  // for the rest of the introduction
        return client;
    }
};

bool hasSnapshots(const Client& client)
{
    return !client.datagrams.received.empty();
}

bool isConnected(const std::unique_ptr<Client>& client)
{
    return !client->serverHungUp();
}

std::string frameOfType(std::uint16_t qport, char type)
{
    std::string frame = messages::steeringFrame(qport, {Quaternion(), control::forward});
    frame[4] = type;
    return frame;
}

std::string frameWithoutSense(std::uint16_t qport)
{
    return messages::steeringFrame(qport, {}).substr(0, 2) + "\x02\0\x04\xFF"s;
}

void repeat(std::size_t times, const std::function<void()>& action)
{
    for (std::size_t i = 0; i < times; ++i) {
        action();
    }
}

}  // namespace

TEST_F(Server, IntroducesEveryShipAndSendsSnapshots)
{
    open(30);
    Client& client = join();
    EXPECT_NE(client.qport(), 0U);
    EXPECT_EQ(client.checker.positions.size(), 31U);
    EXPECT_EQ(client.checker.positions.count(client.id()), 1U);
    run(200ms);
    EXPECT_FALSE(hasSnapshots(client)) << "its address is unknown";
    client.steer({});
    run(2s);
    const auto& snapshots = client.checker.traffic.snapshots;
    ASSERT_NEAR(static_cast<double>(snapshots.size()), 40.0, 20.0);  // the machine may be busy
    EXPECT_EQ(snapshots.rbegin()->first - snapshots.begin()->first, 50U * (snapshots.size() - 1));
    EXPECT_GT(client.checker.received.updates.size(), 15 * snapshots.size());
}

TEST_F(Server, ReleasesTheControlsOfASilentClient)
{
    open(0);
    Client& client = join();
    run(1200ms);  // silence before the first steering releases nothing later
    client.steer({Quaternion(), control::fire});
    run(2500ms);
    const std::size_t shots = client.checker.received.infos.size() - 1;
    EXPECT_GE(shots, 3U);
    EXPECT_LE(shots, 6U);
}

TEST_F(Server, ClientsSeeEachOtherMoveFireComeAndGo)
{
    open(0);
    Client& first = join();
    Client& second = join();
    first.steer({});
    second.steer({Quaternion(), control::up | control::fire});
    const float start = second.position().y;
    EXPECT_TRUE(runUntil([&] {
        const auto& infos = first.checker.received.infos;
        return first.checker.positions[second.id()].y > start + 2.0F &&
               std::any_of(infos.begin(), infos.end(), [](const auto& i) { return i.objecttype() == 1; });
    }));
    Client& third = join();
    EXPECT_EQ(third.checker.positions[first.id()], first.position());
    EXPECT_EQ(first.checker.positions[third.id()], third.position());
    third.hangUp();
    EXPECT_TRUE(runUntil([&] { return first.hasLost(third.id()) && second.hasLost(third.id()); }));
    EXPECT_EQ(log, (std::vector<std::string>{"join Pilot 1 (blue) from " + first.address,
                                             "join Pilot 2 (red) from " + second.address,
                                             "join Pilot 3 (blue) from " + third.address, "leave Pilot 3"}));
}

TEST_F(Server, ASocketPlaysAgainBesideItsEarlierConnection)
{
    open(0);
    Client& socket = join();
    const Client& again = join();
    socket.steer({});
    ASSERT_TRUE(runUntil([&] { return hasSnapshots(socket); }));
    const Vector3 start = again.position();
    socket.sendDatagram(messages::steeringFrame(again.qport(), {Quaternion(), control::up}));
    EXPECT_TRUE(runUntil([&] { return socket.checker.positions[again.id()].y > start.y; }));
    const Vector3 own = socket.position();
    socket.steer({Quaternion(), control::up});
    EXPECT_TRUE(runUntil([&] { return socket.position().y > own.y; })) << "the earlier one has lost control";
}

TEST_F(Server, StopsWithoutLeavingWorkEvenTwice)
{
    open(2);
    const Client& client = join();
    const std::uint16_t port = server->port();
    server->stop();
    server->stop();
    EXPECT_TRUE(runUntil([&] { return client.serverHungUp(); }));
    EXPECT_THROW(Client(io, port), boost::system::system_error);
    io.run_for(2s);
    EXPECT_TRUE(io.stopped());
}

TEST_F(Server, DropsEachOffenderWithItsReason)
{
    config.limits = {2, 1, 60, 100, 5000, 10000, 10};
    open(0);
    const std::pair<std::function<void(Client&)>, std::string> offences[] = {
        {[](Client& c) { repeat(20, [&] { c.steer({}); }); }, "sent more than 60 datagrams a second"},
        {[](Client& c) { c.steer({}), c.sendDatagram("\x5A"); }, "sent more than 10 messages without sense"},
        {[](Client& c) { c.steer({}), c.sendDatagram(frameWithoutSense(c.qport())); },
         "sent more than 10 messages without sense"},
        {[](Client& c) { c.steer({}), c.sendStream(std::string(300, '\xEE')); },
         "sent bytes on TCP that are no message"},
        {[](Client& c) { c.steer({}), repeat(100, [&] { c.sendStream(frameOfType(c.qport(), 9)); }); },
         "sent more than 5000 bytes a second on TCP"},
        {[](Client&) {}, "sent no steering over UDP within 2 s"},
        {[](Client& c) { hasSnapshots(c) ? void() : c.steer({}); }, "sent no datagram for 1 s"},
    };
    Client& honest = join();
    repeat(std::size(offences), [this] { join(); });
    ASSERT_TRUE(runUntil([&] {
        honest.steer({});
        honest.sendStream(frameOfType(honest.qport(), 9));
        for (std::size_t i = 0; i < std::size(offences); ++i) {
            offences[i].first(*clients[i + 1]);
        }
        run(50ms);
        return std::none_of(clients.begin() + 1, clients.end(), isConnected);
    }));
    for (std::size_t i = 0; i < std::size(offences); ++i) {
        const std::string line = "drop Pilot " + std::to_string(i + 2) + ": " + offences[i].second;
        EXPECT_EQ(std::count(log.begin(), log.end(), line), 1) << line;
    }
    EXPECT_FALSE(honest.serverHungUp());
    EXPECT_EQ(honest.checker.positions.size(), 1U) << "a ship without a client";
}

TEST_F(Server, OnlyTheClientItselfSteersItsShip)
{
    config.limits.garbageBurst = 5;
    config.limits.datagramBurst = 20;
    open(0);
    Client& client = join();
    Client& intruder = join();
    const Vector3 start = client.position();
    const Vector3 intrudersStart = intruder.position();
    const std::string valid = messages::steeringFrame(client.qport(), {Quaternion(), control::forward});
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const auto sendHarmless = [&] {
        const auto nobodys = static_cast<std::uint16_t>(client.qport() ^ intruder.qport() ^ 1U);
        for (const std::string& bytes :
             {messages::steeringFrame(nobodys, {}), frameOfType(client.qport(), 77), ""s,
              messages::steeringFrame(client.qport(), {Quaternion(nan, 0, 0, 0), control::forward})}) {
            client.sendDatagram(bytes);
            run(20ms);
        }
    };
    boost::asio::ip::udp::socket otherHost(io, {boost::asio::ip::make_address_v4("127.0.0.2"), 0});
    sendHarmless();
    repeat(10, [&] {  // the sender is not known yet, so these do not count
        client.sendDatagram(frameOfType(client.qport(), 77) + frameWithoutSense(client.qport()) + "\x5A");
    });
    otherHost.send_to(boost::asio::buffer(valid), peer::loopback(server->port()));
    run(200ms);
    EXPECT_FALSE(hasSnapshots(client)) << "a message without sense told its address";
    EXPECT_EQ(otherHost.available(), 0U) << "a stranger was taken for the client";
    client.steer({});
    ASSERT_TRUE(runUntil([&] { return hasSnapshots(client); }));
    sendHarmless();
    repeat(100, [&] {
        intruder.sendDatagram(valid);  // the right qport, from another address
        intruder.sendDatagram(std::string(50, '\xEE'));
    });
    intruder.sendStream(valid);
    client.sendDatagram(messages::steeringFrame(client.qport(), {}) +
                        messages::steeringFrame(intruder.qport(), {}) + valid);
    run(200ms);
    EXPECT_FALSE(hasSnapshots(intruder));
    EXPECT_EQ(client.position(), start);
    EXPECT_EQ(client.checker.positions[intruder.id()], intrudersStart);
    EXPECT_EQ(log.size(), 2U) << log.back();
    client.sendStream(valid);
    EXPECT_TRUE(runUntil([&] { return client.position().z > start.z; }));
    client.sendDatagram(messages::steeringFrame(client.qport(), {}) + frameOfType(client.qport(), 77) +
                        messages::steeringFrame(client.qport(), {Quaternion(), control::up}));
    EXPECT_TRUE(runUntil([&] { return client.position().y > start.y; })) << "only the first frame counted";
}

TEST_F(Server, TurnsAFloodAwayWithoutFloodingTheLog)
{
    config.mostClients = 1;
    open(2);
    const Client& player = join();
    const std::string start = "turned away ";
    const auto counted = [&] {
        int sum = 0;
        for (const std::string& line : log) {
            sum += line.find(start) == 0 ? std::stoi(line.substr(start.size())) : 0;
        }
        return sum;
    };
    repeat(20, [this] { connect(); });
    EXPECT_TRUE(runUntil([&] { return counted() == 20; }));
    repeat(6, [this] {
        repeat(5, [this] { connect(); });
        run(50ms);
    });
    EXPECT_TRUE(runUntil([&] { return counted() == 50; }));
    run(1200ms);
    EXPECT_EQ(counted(), 50);
    EXPECT_LE(log.size(), 5U) << "more than a line in a second";
    EXPECT_TRUE(std::none_of(clients.begin() + 1, clients.end(), isConnected));
    EXPECT_TRUE(std::all_of(clients.begin() + 1, clients.end(), [](const auto& c) { return c->id() == 0; }));
    EXPECT_FALSE(player.serverHungUp());
}

TEST_F(Server, HangUpsDelayNobodyAndStayOutOfTheLog)
{
    open(0);
    const auto flood = [&] {
        repeat(5, [&] {
            const Client passer(io, server->port());
            Client talker(io, server->port());
            talker.sendStream("x");
            talker.reset();
        });
        return false;
    };
    runUntil(flood, 1s);
    const Client& newcomer = connect();
    EXPECT_TRUE(runUntil([&] { return flood() || newcomer.id() != 0; }, 1s));
    EXPECT_EQ(log, std::vector<std::string>{"join Pilot 1 (blue) from " + newcomer.address});
}

#ifndef __SANITIZE_ADDRESS__  // the sanitizers' check of virtual calls needs descriptors itself
TEST_F(Server, ReportsEachShortageOfDescriptorsOnce)
{
    open(0);
    for (int shortage = 1; shortage <= 2; ++shortage) {
        const Client& client = connect();
        const int firstFree = dup(0);
        close(firstFree);
        rlimit limit{};
        getrlimit(RLIMIT_NOFILE, &limit);
        const rlimit none{static_cast<rlim_t>(firstFree), limit.rlim_max};
        setrlimit(RLIMIT_NOFILE, &none);
        run(500ms);
        setrlimit(RLIMIT_NOFILE, &limit);
        EXPECT_EQ(std::count(log.begin(), log.end(), "cannot accept a connection: Too many open files"),
                  shortage);
        EXPECT_TRUE(runUntil([&] { return client.id() != 0; }));
    }
}
#endif

TEST_F(Server, AccountsForEveryLineWithinASecondOrAtItsStop)
{
    config.mostClients = 100;
    open(0);
    repeat(100, [this] { connect(); });
    const auto lines = [this] {
        int sum = 0;
        for (const std::string& line : log) {
            sum += line.find("... and ") == 0 ? std::stoi(line.substr(8)) : 1;
        }
        return sum;
    };
    EXPECT_TRUE(runUntil([&] { return lines() == 100; }));
    EXPECT_LT(log.size(), 100U);
    std::for_each(clients.begin() + 1, clients.end(), [](const auto& client) { client->hangUp(); });
    EXPECT_TRUE(runUntil([&] { return clients[0]->checker.received.destroyed.size() == 99; }));
    server->stop();
    EXPECT_EQ(lines(), 199);
}
