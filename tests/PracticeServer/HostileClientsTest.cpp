#include "PracticeServer/PracticeServer.h"

#include "tests/PracticeServer/ServerFixture.h"

#include <algorithm>
#include <limits>
#include <set>

using namespace practice;
using namespace std::string_literals;

namespace {

std::string frameOfType(std::uint16_t qport, char type)
{
    std::string frame = steeringFrame(qport, {Quaternion(), control::forward});
    frame[4] = type;
    return frame;
}

/// What a client does again and again, and what the server says of it.
struct Offence
{
    std::function<void(TestClient&)> commit;
    std::string reason;
};

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
    config.sendQueue = 6000;
    open(0);
    const std::vector<Offence> offences = {
        {[](TestClient& c) { repeat(20, [&] { c.steer({}); }); }, "sent more than 60 datagrams a second"},
        {[](TestClient& c) { c.steer({}), c.sendDatagram("\x5A"); },
         "sent more than 10 messages without sense"},
        {[](TestClient& c) {
             c.steer({}), c.sendDatagram(frameOfType(c.qport(), 4).substr(0, 2) + "\x02\0\x04\xFF"s);
         },
         "sent more than 10 messages without sense"},
        {[](TestClient& c) { c.steer({}), c.sendStream(std::string(300, '\xEE')); },
         "sent bytes on TCP that are no message"},
        {[](TestClient& c) { c.steer({}), repeat(100, [&] { c.sendStream(frameOfType(c.qport(), 9)); }); },
         "sent more than 5000 bytes a second on TCP"},
        {[](TestClient&) {}, "sent no steering over UDP within 2 s"},
        {[](TestClient& c) { c.datagrams.empty() ? c.steer({}) : void(); }, "sent no datagram for 1 s"},
    };
    TestClient& honest = join();
    std::vector<TestClient*> hostile;
    std::generate_n(std::back_inserter(hostile), offences.size(), [this] { return &join(); });
    auto nextDeed = std::chrono::steady_clock::now();
    ASSERT_TRUE(runUntil(
        [&] {
            if (std::chrono::steady_clock::now() >= nextDeed) {
                nextDeed += 50ms;
                honest.steer({});
                for (std::size_t i = 0; i < offences.size(); ++i) {
                    hostile[i]->serverHungUp ? void() : offences[i].commit(*hostile[i]);
                }
            }
            return std::all_of(hostile.begin(), hostile.end(), [](TestClient* c) { return c->serverHungUp; });
        },
        10s));
    for (std::size_t i = 0; i < offences.size(); ++i) {
        EXPECT_TRUE(logHas("drop Pilot " + std::to_string(i + 2) + ": " + offences[i].reason))
            << offences[i].reason;
    }
    EXPECT_FALSE(honest.serverHungUp);
}

TEST_F(Server, AClientThatNeverReadsIsCutOffAndTheOthersHearEverySnapshot)
{
    config.sendQueue = 6000;
    open(0);
    TestClient& honest = join();
    honest.steer({});
    join().stopReading();
    ASSERT_TRUE(runUntil(
        [&] {
            TestClient passer(server->port());  // comes and goes: all are told
            return std::any_of(log.begin(), log.end(), [](const std::string& line) {
                return line.find("drop Pilot 2: does not read") == 0;
            });
        },
        20s));
    std::set<std::uint32_t> times;
    for (const Vantor::ObjectUpdate& update : honest.heard.updates) {
        times.insert(update.timestamp());
    }
    ASSERT_GT(times.size(), 5U);
    EXPECT_EQ(*times.rbegin() - *times.begin(), 50U * (times.size() - 1)) << "a snapshot is missing";
}

TEST_F(Server, OnlyTheClientItselfSteersItsShipAndNobodyElseGetsItDropped)
{
    config.conduct.garbageBurst = 5;
    config.conduct.datagramBurst = 20;
    open(0);
    TestClient& client = join();
    TestClient& intruder = join();
    const Vector3 start = client.position();
    const std::string valid = steeringFrame(client.qport(), {Quaternion(), control::forward});
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::string harmless[] = {
        steeringFrame(static_cast<std::uint16_t>(client.qport() ^ intruder.qport() ^ 1U), {}),
        steeringFrame(client.qport(), {Quaternion(nan, 0, 0, 0), control::forward}),
        frameOfType(client.qport(), 0),
        frameOfType(client.qport(), 1),
        frameOfType(client.qport(), 77),
        ""};
    const auto sendHarmless = [&] {
        for (const std::string& bytes : harmless) {
            client.sendDatagram(bytes);
            run(20ms);
        }
    };
    sendHarmless();
    EXPECT_TRUE(client.datagrams.empty()) << "its address was taken from a message that means nothing";
    client.steer({});
    ASSERT_TRUE(runUntil([&] { return !client.datagrams.empty(); }));
    sendHarmless();
    repeat(100, [&] {
        intruder.sendDatagram(valid);  // the right qport, from another address
        intruder.sendDatagram(std::string(50, '\xEE'));
    });
    intruder.sendStream(valid);
    run(200ms);
    EXPECT_TRUE(intruder.datagrams.empty());
    EXPECT_EQ(client.position(), start);
    EXPECT_EQ(log.size(), 2U) << log.back();
    client.sendStream(valid);
    EXPECT_TRUE(runUntil([&] { return client.position().z > start.z; }));
}

TEST_F(Server, AFloodOfConnectionsFindsItFullAndDoesNotFillTheLog)
{
    config.mostClients = 1;
    open(2);
    const TestClient& player = join();
    for (int i = 0; i < 50; ++i) {
        clients.push_back(std::make_unique<TestClient>(server->port()));
    }
    const auto turnedAway = [](const auto& c) { return c->serverHungUp && c->heard.types.empty(); };
    EXPECT_TRUE(runUntil(
        [&] { return log.size() > 1 && std::all_of(clients.begin() + 1, clients.end(), turnedAway); }));
    EXPECT_FALSE(player.serverHungUp);
    EXPECT_LE(log.size(), 4U) << "more than a line in a second";
    EXPECT_EQ(log.at(1).find("turned away "), 0U) << log.at(1);
}
