#include "network/Messages.h"
#include "peer/ProtocolChecker.h"
#include "peer/ScriptedServer.h"

#include <gtest/gtest.h>

#include <limits>
#include <tuple>

using messages::ShipState;
using peer::ProtocolChecker;
using peer::rawFrame;

namespace {

constexpr std::uint64_t ship = std::uint64_t(1) << 32U;
const std::string welcome = messages::welcomeFrame({ship}, 9);
const std::string info = messages::infoFrame(ShipState{ship});

std::string update(std::uint32_t time, Vector3 position = {}, Quaternion orientation = {})
{
    return messages::updateFrame(ship, time, position, orientation);
}

}  // namespace

TEST(ProtocolChecker, NamesEachFault)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::string longest = messages::infoFrame(ShipState{ship, {}, {}, {}, 1, std::string(1200, 'n')});
    const std::tuple<std::string, std::string, std::string> cases[] = {
        // stream, datagram, fault
        {welcome + info + info, update(50) + update(50), ""},
        {welcome + info + "\x7F", "", ""},  // the rest is still to come
        {info, "", "an object before the welcome"},
        {welcome + welcome, "", "a second welcome"},
        {welcome + info + update(50), "", "an update on TCP"},
        {welcome + rawFrame(9, ""), "", "a type byte that no server sends"},
        {welcome + rawFrame(4, ""), "", "a type byte that no server sends"},
        {welcome + rawFrame(1, "?"), "", "a body that is no message of its type"},
        {welcome + messages::infoFrame(ShipState{7}), "", "an id among those of the clients"},
        {welcome + messages::infoFrame(ShipState{ship, {}, {nan, 0, 0}}), "", "an object without a pose"},
        {welcome, update(50), "a ship that moves but was never announced"},
        {welcome + info, update(50, {0, nan, 0}), "an update without a pose"},
        {welcome + info, update(50, {}, {2, 0, 0, 0}), "an update without a pose"},
        {welcome + info, update(50) + update(100), "two times in one datagram"},
        {welcome + info, update(49), "a snapshot between two multiples of 50 ms"},
        {welcome + info, update(50) + "\x01", "half a frame at the end of a datagram"},
        {welcome, longest, "a datagram of more than 1,200 bytes"},
    };
    for (auto [stream, datagram, fault] : cases) {
        ProtocolChecker checker;
        checker.receiveStream(stream);
        checker.receiveDatagram({{}, {}, datagram});
        checker.receiveDatagram({{}, {}, ""});
        const auto faults = checker.faults();
        EXPECT_EQ(faults.count(fault), faults.size()) << fault;
        EXPECT_EQ(faults.empty(), fault.empty()) << fault;
    }
}
