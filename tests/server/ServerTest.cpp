#include "peer/HeadlessClient.h"
#include "server/net/PracticeServer.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
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
        return peer::eventually(
            [&] {
                io.poll();
                std::for_each(clients.begin(), clients.end(), [](const auto& client) { client->poll(); });
                return condition();
            },
            time);
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
    /// The sum of the numbers behind this text in the log.
    int logged(const std::string& text) const
    {
        int sum = 0;
        for (const std::string& line : log) {
            sum += line.find(text) == 0 ? std::stoi(line.substr(text.size())) : 0;
        }
        return sum;
    }
};

bool hasSnapshots(const Client& client)
{
    return client.checker.traffic.datagramBytes != 0;
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

TEST_F(Server, ClientsSeeEachOtherMoveFireComeAndGo)
{
    config.random = [i = 0U]() mutable { return std::array{0x70000U, 0x10007U, 7U, 8U, 9U}.at(i++); };
    open(0);
    Client& first = join();
    Client& second = join();
    EXPECT_EQ(first.qport(), 7) << "not 0";
    EXPECT_EQ(second.qport(), 8) << "not that of the first";
    first.steer({});
    second.steer({Quaternion(), control::up | control::fire});
    const float start = second.position().y;
    EXPECT_TRUE(runUntil([&] { return first.checker.positions[second.id()].y > start + 2.0F; }));
    run(2500ms);
    const auto& infos = first.checker.received.infos;
    const auto shots =
        std::count_if(infos.begin(), infos.end(), [](const auto& i) { return i.objecttype(); });
    EXPECT_TRUE(shots >= 3 && shots <= 6) << shots << "; silence releases the controls";
    Client& third = join();
    EXPECT_EQ(third.checker.positions[first.id()], first.position());
    EXPECT_EQ(first.checker.positions[third.id()], third.position());
    third.stream.close();
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

TEST_F(Server, DropsEachOffenderWithItsReason)
{
    config.limits = {2, 1, 60, 100, 5000, 10000, 10};
    open(0);
    const std::pair<std::function<void(Client&)>, std::string> offences[] = {
        {[](Client& c) { repeat(20, [&] { c.steer({}); }); }, "sent more than 60 datagrams a second"},
        {[](Client& c) { c.steer({}), c.sendDatagram("\x5A"); }, "sent more than 10 messages without sense"},
        {[](Client& c) { c.steer({}), c.sendDatagram(frameOfType(c.qport(), 9) + "\x5A"); },
         "sent more than 10 messages without sense"},
        {[](Client& c) { c.steer({}), c.sendDatagram(frameWithoutSense(c.qport())); },
         "sent more than 10 messages without sense"},
        {[](Client& c) { c.steer({}), c.stream.send(std::string(300, '\xEE')); },
         "sent bytes on TCP that are no message"},
        {[](Client& c) { c.steer({}), repeat(100, [&] { c.stream.send(frameOfType(c.qport(), 9)); }); },
         "sent more than 5000 bytes a second on TCP"},
        {[](Client&) {}, "sent no steering over UDP within 2 s"},
        {[](Client& c) { hasSnapshots(c) ? void() : c.steer({}); }, "sent no datagram for 1 s"},
    };
    Client& honest = join();
    repeat(std::size(offences), [this] { join(); });
    ASSERT_TRUE(runUntil([&] {
        honest.steer({});
        honest.stream.send(frameOfType(honest.qport(), 9));
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
    const auto nobodys = static_cast<std::uint16_t>(client.qport() ^ intruder.qport() ^ 1U);
    const auto sendHarmless = [&] {
        for (const std::string& bytes :
             {messages::steeringFrame(nobodys, {}) + "\x5A", frameOfType(client.qport(), 77), ""s,
              messages::steeringFrame(client.qport(), {Quaternion(nan, 0, 0, 0), control::forward})}) {
            repeat(6, [&] { client.sendDatagram(bytes); });
            run(40ms);
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
    intruder.stream.send(valid);
    client.sendDatagram(messages::steeringFrame(client.qport(), {}) +
                        messages::steeringFrame(intruder.qport(), {}) + valid);
    run(200ms);
    EXPECT_FALSE(hasSnapshots(intruder));
    EXPECT_EQ(client.position(), start);
    EXPECT_EQ(client.checker.positions[intruder.id()], intrudersStart);
    EXPECT_EQ(log.size(), 2U) << log.back();
    client.stream.send(valid);
    EXPECT_TRUE(runUntil([&] { return client.position().z > start.z; }));
    client.sendDatagram(messages::steeringFrame(client.qport(), {}) + frameOfType(client.qport(), 77) +
                        messages::steeringFrame(client.qport(), {Quaternion(), control::up}));
    EXPECT_TRUE(runUntil([&] { return client.position().y > start.y; })) << "only the first frame counted";
}

TEST_F(Server, AFloodOverrunsNeitherTheServerNorTheLog)
{
    config.mostClients = 90;
    open(0);
    repeat(120, [this] { connect(); });
    bool isSteady = true;
    const auto isSettled = [&] {
        isSteady =
            isSteady && server->currentMatch().allShips().size() <= 4 * server->currentMatch().stepCount();
        return logged("turned away ") == 30;
    };
    EXPECT_TRUE(runUntil(isSettled));
    EXPECT_TRUE(isSteady) << "too many admitted in one step";
    repeat(6, [this] {
        repeat(5, [this] { connect(); });
        run(50ms);
    });
    EXPECT_TRUE(runUntil([&] { return logged("turned away ") == 60; }));
    run(1200ms);
    EXPECT_EQ(logged("turned away "), 60);
    EXPECT_LE(log.size(), 87U) << "80 joins, what was left out, and a line a second";
    EXPECT_EQ(std::count_if(clients.begin(), clients.end(), isConnected), 90);

    const auto lines = [this] {
        const auto others = [](const std::string& line) { return line[0] == 'j' || line[0] == 'l'; };
        return std::count_if(log.begin(), log.end(), others) + logged("... and ");
    };
    EXPECT_EQ(lines(), 90);
    std::for_each(clients.begin() + 1, clients.end(), [](const auto& client) { client->stream.close(); });
    EXPECT_TRUE(runUntil([&] { return clients[0]->checker.received.destroyed.size() == 89; }));
    server->stop();
    server->stop();
    EXPECT_EQ(lines(), 179);
    EXPECT_TRUE(runUntil([&] { return clients[0]->serverHungUp(); }));
    EXPECT_THROW(connect(), boost::system::system_error);
    io.run_for(2s);
    EXPECT_TRUE(io.stopped()) << "work is left";
}

TEST_F(Server, HangUpsDelayNobodyAndStayOutOfTheLog)
{
    open(0);
    const auto flood = [&] {
        repeat(5, [&] {
            const Client passer(io, server->port());
            Client talker(io, server->port());
            talker.stream.send("x");
            talker.stream.reset();
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
