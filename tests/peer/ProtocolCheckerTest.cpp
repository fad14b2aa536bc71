#include "peer/HeadlessClient.h"
#include "peer/ScriptedServer.h"

#include <gtest/gtest.h>

#include <limits>

using namespace std::chrono_literals;
using messages::ShipState;
using peer::ProtocolChecker;
using Faults = std::map<std::string, std::uint64_t>;

namespace {

constexpr std::uint64_t ship = std::uint64_t(1) << 32U;
const std::string welcome = messages::welcomeFrame({ship}, 9);
const std::string info = messages::infoFrame(ShipState{ship});

Faults faultsOf(std::string stream, const std::vector<std::string>& datagrams)
{
    ProtocolChecker checker;
    checker.receiveStream(stream);
    for (const std::string& bytes : datagrams) {
        checker.receiveDatagram({peer::Clock::now(), {}, bytes});
    }
    return checker.faults();
}

std::string update(std::uint32_t time, Vector3 position = {}, Quaternion orientation = {})
{
    return messages::updateFrame(ship, time, position, orientation);
}

}  // namespace

TEST(ProtocolChecker, CountsEachKindOfFault)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const struct
    {
        std::string stream;
        std::vector<std::string> datagrams;
        Faults faults;
    } cases[] = {
        {welcome + info + info, {update(50) + update(50), update(100)}, {}},
        {welcome + info + "\x7F", {}, {}},  // the rest is still to come
        {info, {}, {{"an object before the welcome", 1}}},
        {welcome + welcome, {}, {{"a second welcome", 1}}},
        {welcome + info + update(50), {}, {{"an update on TCP", 1}}},
        {welcome + peer::rawFrame(9, "") + peer::rawFrame(4, ""),
         {},
         {{"a type byte that no server sends", 2}}},
        {welcome + peer::rawFrame(1, "?"), {}, {{"a body that is no message of its type", 1}}},
        {welcome + messages::infoFrame(ShipState{7}), {}, {{"an id among those of the clients", 1}}},
        {welcome + messages::infoFrame(ShipState{ship, false, {nan, 0, 0}}),
         {},
         {{"an object without a pose", 1}}},
        {welcome, {update(50)}, {{"a ship that moves but was never announced", 1}}},
        {welcome + info, {update(50, {0, nan, 0})}, {{"an update without a pose", 1}}},
        {welcome + info, {update(50, {}, {2, 0, 0, 0})}, {{"an update without a pose", 1}}},
        {welcome + info, {update(50) + update(100)}, {{"two times in one datagram", 1}}},
        {welcome + info, {update(49)}, {{"a snapshot between two multiples of 50 ms", 1}}},
        {welcome + info, {update(50) + "\x01"}, {{"half a frame at the end of a datagram", 1}}},
        {welcome,
         {messages::infoFrame(ShipState{ship, false, {}, {}, 1, std::string(1200, 'n')})},
         {{"a datagram of more than 1,200 bytes", 1}}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(faultsOf(c.stream, c.datagrams), c.faults);
    }
}

TEST(HeadlessClient, HearsAndSteersAndNoticesTheEnd)
{
    boost::asio::io_context io;
    peer::ScriptedServer server;
    server.hasHeartbeat = false;
    peer::HeadlessClient client(io, static_cast<std::uint16_t>(std::stoi(server.port())));
    const auto await = [&](const auto& condition) {
        return peer::eventually([&] {
            client.poll();
            return condition();
        });
    };
    ASSERT_TRUE(peer::eventually([&] { return server.sendTcp(welcome + info.substr(0, 5)); }));
    ASSERT_TRUE(await([&] { return client.id() == ship; }));
    client.steer({Quaternion(0, 1, 0, 0), 5});
    client.sendStream("four");
    ASSERT_TRUE(peer::eventually([&] { return !server.record().datagrams.empty(); }));
    EXPECT_EQ(server.lastSteering().qport, 9);
    EXPECT_EQ(server.lastSteering().controls, 5U);
    EXPECT_TRUE(peer::eventually([&] { return server.record().tcpBytes == 4; }));

    server.sendTcp(info.substr(5));
    EXPECT_TRUE(await([&] { return client.checker.received.infos.size() == 1; }));
    server.sendUdp(update(50, {1, 2, 3}));
    EXPECT_TRUE(await([&] { return client.position().z == 3; }));
    client.forgetMessages();
    EXPECT_TRUE(client.checker.received.infos.empty() && client.datagrams.received.empty());
    server.sendTcp(messages::destroyFrame(ship));
    EXPECT_TRUE(await([&] { return client.hasLost(ship); }));
    EXPECT_EQ(client.checker.faults(), Faults());
    EXPECT_FALSE(client.serverHungUp());
    server.closeTcp();
    EXPECT_TRUE(await([&] { return client.serverHungUp(); }));
    EXPECT_EQ(client.stream.end, boost::asio::error::eof);
}
