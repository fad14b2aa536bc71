#include "server/net/PracticeServer.h"

#include "tests/server/ServerFixture.h"

#include <sys/resource.h>
#include <unistd.h>

#include <limits>

using namespace practice;
using namespace std::string_literals;

namespace {

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

void repeat(int times, const std::function<void()>& action)
{
    for (int i = 0; i < times; ++i) {
        action();
    }
}

}  // namespace

TEST_F(Server, DropsEveryHostileClientWithItsReasonWhileAnHonestOnePlaysOn)
{
    config.conduct = {2, 1, 60, 100, 5000, 10000, 10};
    open(0);
    const std::pair<std::function<void(TestClient&)>, std::string> offences[] = {
        {[](TestClient& c) { repeat(20, [&] { c.steer({}); }); }, "sent more than 60 datagrams a second"},
        {[](TestClient& c) { c.steer({}), c.sendDatagram("\x5A"); },
         "sent more than 10 messages without sense"},
        {[](TestClient& c) { c.steer({}), c.sendDatagram(frameWithoutSense(c.qport())); },
         "sent more than 10 messages without sense"},
        {[](TestClient& c) { c.steer({}), c.sendStream(std::string(300, '\xEE')); },
         "sent bytes on TCP that are no message"},
        {[](TestClient& c) { c.steer({}), repeat(100, [&] { c.sendStream(frameOfType(c.qport(), 9)); }); },
         "sent more than 5000 bytes a second on TCP"},
        {[](TestClient&) {}, "sent no steering over UDP within 2 s"},
        {[](TestClient& c) { c.datagrams.empty() ? c.steer({}) : void(); }, "sent no datagram for 1 s"},
    };
    TestClient& honest = join();
    repeat(static_cast<int>(std::size(offences)), [this] { join(); });
    const auto hungUp = [](const auto& client) { return client->serverHungUp; };
    ASSERT_TRUE(runUntil(
        [&] {
            honest.steer({});
            for (std::size_t i = 0; i < std::size(offences); ++i) {
                offences[i].first(*clients[i + 1]);
            }
            run(50ms);
            return std::all_of(clients.begin() + 1, clients.end(), hungUp);
        },
        10s));
    for (std::size_t i = 0; i < std::size(offences); ++i) {
        const std::string line = "drop Pilot " + std::to_string(i + 2) + ": " + offences[i].second;
        EXPECT_EQ(std::count(log.begin(), log.end(), line), 1) << line;
    }
    EXPECT_FALSE(honest.serverHungUp);
}

TEST_F(Server, OnlyTheClientItselfSteersItsShipAndNobodyElseGetsItDropped)
{
    config.conduct.garbageBurst = 5;
    config.conduct.datagramBurst = 20;
    open(0);
    TestClient& client = join();
    TestClient& intruder = join();
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
    repeat(10, [&] {  // whose they are nobody knows yet
        client.sendDatagram(frameOfType(client.qport(), 77) + frameWithoutSense(client.qport()) + "\x5A");
    });
    otherHost.send_to(boost::asio::buffer(valid), {boost::asio::ip::address_v4::loopback(), server->port()});
    run(200ms);
    EXPECT_TRUE(client.datagrams.empty()) << "its address was taken from a message that means nothing";
    EXPECT_EQ(otherHost.available(), 0U) << "a stranger was taken for the client";
    client.steer({});
    ASSERT_TRUE(runUntil([&] { return !client.datagrams.empty(); }));
    sendHarmless();
    repeat(100, [&] {
        intruder.sendDatagram(valid);  // the right qport, from another address
        intruder.sendDatagram(std::string(50, '\xEE'));
    });
    intruder.sendStream(valid);
    client.sendDatagram(messages::steeringFrame(client.qport(), {}) +
                        messages::steeringFrame(intruder.qport(), {}) + valid);
    run(200ms);
    EXPECT_TRUE(intruder.datagrams.empty());
    EXPECT_EQ(client.position(), start);
    EXPECT_EQ(client.heard.positions[intruder.id()], intrudersStart);
    EXPECT_EQ(log.size(), 2U) << log.back();
    client.sendStream(valid);
    EXPECT_TRUE(runUntil([&] { return client.position().z > start.z; }));
    client.sendDatagram(messages::steeringFrame(client.qport(), {}) + frameOfType(client.qport(), 77) +
                        messages::steeringFrame(client.qport(), {Quaternion(), control::up}));
    EXPECT_TRUE(runUntil([&] { return client.position().y > start.y; })) << "only the first frame counted";
}

TEST_F(Server, AFloodOfConnectionsFindsItFullAndDoesNotFillTheLog)
{
    config.mostClients = 1;
    open(2);
    const TestClient& player = join();
    repeat(50, [this] { connect(); });
    const auto turnedAway = [](const auto& c) { return c->serverHungUp && c->heard.positions.empty(); };
    EXPECT_TRUE(runUntil(
        [&] { return log.size() > 1 && std::all_of(clients.begin() + 1, clients.end(), turnedAway); }));
    EXPECT_FALSE(player.serverHungUp);
    EXPECT_LE(log.size(), 4U) << "more than a line in a second";
    EXPECT_EQ(log.at(1).find("turned away "), 0U) << log.at(1);
}

TEST_F(Server, AFloodOfConnectionsThatHangUpNeitherHoldsUpANewcomerNorFillsTheLog)
{
    open(0);
    const auto flood = [&] {
        repeat(5, [&] {
            const TestClient passer(server->port());
            TestClient talker(server->port());
            talker.sendStream("x");
            talker.reset();
        });
        return false;
    };
    runUntil(flood, 1s);
    const TestClient& newcomer = connect();
    EXPECT_TRUE(runUntil([&] { return flood() || newcomer.id() != 0; }, 1s));
    EXPECT_EQ(log, std::vector<std::string>{"join Pilot 1 (blue) from " + newcomer.address});
}

TEST_F(Server, SaysOnceThatItIsOutOfDescriptorsAndGoesOnWhenItHasSome)
{
    open(0);
    const TestClient& client = connect();
    const int firstFree = dup(0);
    close(firstFree);
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit none{static_cast<rlim_t>(firstFree), limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    run(1s);
    setrlimit(RLIMIT_NOFILE, &limit);
    EXPECT_EQ(log, std::vector<std::string>{"cannot accept a connection: Too many open files"});
    EXPECT_TRUE(runUntil([&] { return client.id() != 0; }));
}

TEST_F(Server, AccountsForEveryLineBeforeItEnds)
{
    config.mostClients = 100;
    open(0);
    repeat(100, [this] { connect(); });
    EXPECT_TRUE(runUntil([&] {
        return std::all_of(clients.begin(), clients.end(), [](const auto& c) { return c->id() != 0; });
    }));
    server->stop();
    int lines = 0;
    for (const std::string& line : log) {
        lines += line.find("... and ") == 0 ? std::stoi(line.substr(8)) : 1;
    }
    EXPECT_EQ(lines, 100);
}

TEST(ServerLog, TellsOfSomeLinesAndOnceASecondHowManyItLeftOut)
{
    std::vector<std::string> heard;
    RateLimitedLog log([&](const std::string& line) { heard.push_back(line); });
    for (std::uint64_t step = 0; step <= 60; ++step) {
        repeat(2, [&] { log.say("join", step); });
        log.afterStep(step);
    }
    EXPECT_EQ(std::count(heard.begin(), heard.end(), "join"), 90) << "a burst and ten a second";
    EXPECT_EQ(heard.size(), 91U);
    EXPECT_EQ(heard.back(), "... and 32 more lines like these");
}
