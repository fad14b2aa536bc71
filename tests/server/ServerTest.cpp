#include "peer/HeadlessClient.h"
#include "server/net/PracticeServer.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <deque>
#include <functional>
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
    std::deque<Client> clients;

    Server()
    {
        config.port = 0;
        config.bots = 0;
        config.log = [this](const std::string& line) { log.push_back(line); };
        // Each number comes twice, and the first, 0, is no qport. So the clients' qports are 1, 2, 3 and so
        // on.
        config.random = [draws = 0x20000U]() mutable { return draws++ / 2; };
    }
    void TearDown() override
    {
        for (const Client& client : clients) {
            const auto faults = client.checker.faults(1s);  // an announcement may still be under way
            EXPECT_TRUE(faults.empty()) << faults.begin()->first;
        }
    }
    void open()
    {
        server = std::make_unique<PracticeServer>(io, config);
        server->start();
    }
    /// Returns false if the time ran out first.
    bool runUntil(const std::function<bool()>& condition, peer::Clock::duration time = 10s)
    {
        return peer::eventually(
            [&] {
                io.poll();
                std::for_each(clients.begin(), clients.end(), std::mem_fn(&Client::poll));
                return condition();
            },
            time);
    }
    void run(peer::Clock::duration time)
    {
        runUntil([] { return false; }, time);
    }
    Client& connect() { return clients.emplace_back(io, server->port()); }
    Client& join()
    {
        Client& client = connect();
        EXPECT_TRUE(runUntil([&client] { return client.id() != 0; }));
        run(30ms);  // for the rest of the introduction
        return client;
    }
};

std::string steering(std::uint16_t qport, std::uint32_t controls = 0)
{
    return messages::steeringFrame(qport, {Quaternion(), controls});
}

/// A frame of a type that means nothing to a server.
std::string emptyFrame(std::uint16_t qport)
{
    return steering(qport).substr(0, 2) + "\x01\0\x09"s;
}

void repeat(std::size_t times, const std::function<void()>& action)
{
    for (std::size_t i = 0; i < times; ++i) {
        action();
    }
}

}  // namespace

TEST_F(Server, ClientsSeeEachOtherMoveFireComeAndGo)
{
    config.mostClients = 3;
    open();
    Client& first = join();
    Client& second = join();
    EXPECT_EQ(second.qport(), 2);
    run(1200ms);  // silence before the first steering releases nothing later
    first.steer({});
    second.steer({Quaternion(), control::up | control::fire});
    const auto stepsBefore = server->currentMatch().stepCount();
    run(3s);
    const auto steps = static_cast<double>(server->currentMatch().stepCount() - stepsBefore);
    const auto& infos = first.checker.received.infos;
    const auto shots =
        std::count_if(infos.begin(), infos.end(), [](const auto& i) { return i.objecttype(); });
    EXPECT_TRUE(shots >= 3 && shots <= 6) << shots << "; silence releases the controls";
    EXPECT_GT(first.checker.positions[second.id()].y, second.checker.received.infos[0].position().y());
    const auto& snapshots = first.checker.traffic.snapshots;
    ASSERT_NEAR(static_cast<double>(snapshots.size()), steps / 3.0, 3.0);
    EXPECT_EQ(snapshots.rbegin()->first - snapshots.begin()->first, 50U * (snapshots.size() - 1));
    const bool isAtPace = std::any_of(snapshots.begin(), snapshots.end(), [&](const auto& snapshot) {
        const auto later = snapshots.find(snapshot.first + 1000);
        const auto time = later == snapshots.end() ? 0s : later->second.arrival - snapshot.second.arrival;
        return time > 800ms && time < 1300ms;
    });
    EXPECT_TRUE(isAtPace) << "a second of the match takes a second";

    Client& third = join();
    EXPECT_EQ(third.checker.positions[first.id()], first.position());
    EXPECT_EQ(first.checker.positions[third.id()], third.position());
    third.stream.close();
    EXPECT_TRUE(runUntil([&] { return first.hasLost(third.id()) && second.hasLost(third.id()); }));
    EXPECT_EQ(log, (std::vector<std::string>{"join Pilot 1 (blue) from " + first.address,
                                             "join Pilot 2 (red) from " + second.address,
                                             "join Pilot 3 (blue) from " + third.address, "leave Pilot 3"}));
    join();  // takes the place of the third
}

TEST_F(Server, DropsEachOffenderWithItsReason)
{
    config.limits = {2, 1, 60, 100, 5000, 10000, 10};
    open();
    const std::string nonsense = "sent more than 10 messages without sense";
    const std::pair<std::function<void(Client&)>, std::string> offences[] = {
        {[](Client& c) { repeat(20, [&] { c.steer({}); }); }, "sent more than 60 datagrams a second"},
        {[](Client& c) { c.steer({}), c.sendDatagram(steering(c.qport()).substr(0, 2) + "\x02\0\x04\xFF"s); },
         nonsense},
        {[](Client& c) { c.sendDatagram(steering(c.qport()) + "\x5A"); }, nonsense},
        {[](Client& c) { c.stream.send(std::string(300, '\xEE')); }, "sent bytes on TCP that are no message"},
        {[](Client& c) { repeat(600, [&] { c.stream.send(emptyFrame(c.qport())); }); },
         "sent more than 5000 bytes a second on TCP"},
        {[](Client&) {}, "sent no steering over UDP within 2 s"},
        {[](Client& c) { c.checker.traffic.datagramBytes != 0 ? void() : c.steer({}); },
         "sent no datagram for 1 s"},
    };
    Client& honest = join();
    repeat(std::size(offences), [this] { join(); });
    ASSERT_TRUE(runUntil([&] {
        honest.steer({});
        honest.stream.send(emptyFrame(honest.qport()));
        for (std::size_t i = 0; i < std::size(offences); ++i) {
            offences[i].first(clients[i + 1]);
        }
        run(50ms);
        return std::all_of(clients.begin() + 1, clients.end(), std::mem_fn(&Client::serverHungUp));
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
    open();
    Client& client = join();
    Client& intruder = join();
    const Vector3 start = client.position();
    const Vector3 intrudersStart = intruder.position();
    const std::string valid = steering(client.qport(), control::forward);
    repeat(10, [&] {  // it does not play yet, so these do not count
        client.sendDatagram(emptyFrame(client.qport()) + "\x5A");
    });
    run(200ms);
    EXPECT_EQ(client.checker.traffic.datagramBytes, 0U);
    client.steer({});
    ASSERT_TRUE(runUntil([&] { return client.checker.traffic.datagramBytes != 0; }));
    repeat(6, [&] { client.sendDatagram(emptyFrame(client.qport())); });
    repeat(30, [&] {  // strangers can use its address
        client.sendDatagram("");
        client.sendDatagram("\x5A");
        client.sendDatagram(steering(99) + "\x5A");
        intruder.sendDatagram(valid);
    });
    intruder.stream.send(valid);
    intruder.datagrams.send("half", client.datagrams.socket.local_endpoint());
    client.sendDatagram(steering(client.qport()) + steering(intruder.qport(), control::up) + valid);
    run(200ms);
    EXPECT_EQ(client.position(), start);
    EXPECT_EQ(client.checker.positions[intruder.id()], intrudersStart);
    client.stream.send(valid.substr(0, 20));
    run(20ms);
    client.stream.send(valid.substr(20));
    EXPECT_TRUE(runUntil([&] { return client.position().z > start.z; }));
    client.sendDatagram(emptyFrame(client.qport()) + steering(client.qport(), control::up));
    EXPECT_TRUE(runUntil([&] { return client.position().y > start.y; })) << "only the first frame counted";

    client.datagrams = peer::DatagramEnd(boost::asio::ip::udp::socket(io, peer::loopback(0)));
    const auto newPort = client.datagrams.socket.local_endpoint().port();
    const std::size_t before = client.checker.traffic.snapshots.size();
    EXPECT_TRUE(runUntil([&] {
        client.steer({});
        return client.checker.traffic.snapshots.size() > before + 20;
    })) << "its network gave it another port";
    EXPECT_EQ(std::count(log.begin(), log.end(), "move Pilot 1 to port " + std::to_string(newPort)), 1);
    EXPECT_NE(std::count(log.begin(), log.end(), "ignore a guess at a qport from 127.0.0.1"), 0);
    EXPECT_GE(server->counts().at("qport guesses"), 60U);
    EXPECT_EQ(server->counts().at("port moves"), 1U);
    EXPECT_EQ(server->counts().at("drops"), 0U);
}

TEST_F(Server, AFloodOverrunsNeitherTheServerNorTheLog)
{
    config.mostClients = 90;
    open();
    repeat(120, [this] { connect(); });
    const Match& match = server->currentMatch();
    const auto& counts = server->counts();
    EXPECT_TRUE(runUntil([&] {
        EXPECT_LE(match.allShips().size(), 4 * match.stepCount()) << "too many admitted in one step";
        return counts.at("turned away") == 30;
    }));
    clients[0].steer({});
    repeat(6, [this] {
        repeat(100, [this] {  // hang-ups delay nobody, and stay out of the log
            const Client passer(io, server->port());
            Client talker(io, server->port());
            talker.stream.send("x");
            talker.stream.reset();
        });
        repeat(5, [this] { connect(); });
        run(50ms);
    });
    run(1200ms);
    EXPECT_NE(std::count(log.begin(), log.end(), "turn away 127.0.0.1: all 90 places are taken"), 0);
    EXPECT_EQ(counts.at("turned away"), 60U);
    EXPECT_LT(log.size(), 92U) << "more than 80 joins and three lines a second";
    EXPECT_EQ(std::count_if(clients.begin(), clients.end(), std::mem_fn(&Client::serverHungUp)), 60);
    EXPECT_EQ(clients[89].checker.positions.size(), 90U) << "it was not introduced to every ship";
    const auto& first = clients[0].checker;
    EXPECT_GT(first.received.updates.size(), 80 * first.traffic.snapshots.size());

    const auto lines = [this] {
        unsigned long sum = 0;
        for (const std::string& line : log) {
            sum += line[0] == '.' ? std::stoul(line.substr(8)) : std::string("jlt").find(line[0]) < 3;
        }
        return sum;
    };
    EXPECT_EQ(lines(), 90U + 60U);
    for (const std::size_t gone : {60U, 89U}) {  // the second time, the next count is not due yet
        std::for_each_n(clients.begin() + 1, gone, [](Client& client) { client.stream.close(); });
        EXPECT_TRUE(runUntil([&] { return first.received.destroyed.size() == gone; }));
    }
    server->stop();
    server->stop();
    EXPECT_EQ(lines(), 90U + 60U + 89U);
    EXPECT_TRUE(runUntil([&] { return clients[0].serverHungUp(); }));
    EXPECT_THROW(connect(), boost::system::system_error);
    io.run_for(2s);
    EXPECT_TRUE(io.stopped()) << "work is left";
}

#ifndef VANTOR_UNDEFINED_SANITIZER  // its check of virtual calls needs descriptors
TEST_F(Server, ReportsEachShortageOfDescriptorsOnce)
{
    open();
    for (int shortage = 1; shortage <= 2; ++shortage) {
        const Client& client = connect();
        rlimit limit{};
        getrlimit(RLIMIT_NOFILE, &limit);
        const rlimit none{0, limit.rlim_max};
        setrlimit(RLIMIT_NOFILE, &none);
        run(500ms);
        setrlimit(RLIMIT_NOFILE, &limit);
        EXPECT_EQ(std::count(log.begin(), log.end(), "cannot accept a connection: Too many open files"),
                  shortage);
        EXPECT_TRUE(runUntil([&] { return client.id() != 0; }));
    }
}
#endif
