#include "network/AbstractPacketReceiver.h"

#include "Common/Protobuf/Object/Object.pb.h"
#include "instrumentation/Logger.h"
#include "network/NetworkEvent.h"
#include "tests/network/Steering.h"
#include "tests/support/Messages.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using Strings = std::vector<std::string>;
using support::destroy;
using tcp = boost::asio::ip::tcp;
using udp = boost::asio::ip::udp;

// Writes down what is handed over; every handler answers `goOn`.
class Recorder : public AbstractPacketReceiver
{
public:
    using AbstractPacketReceiver::AbstractPacketReceiver;

    bool dispatchClosedConnection(tcp::socket*) override { return record("closed", 0); }
    bool dispatchObjectDestroy(Vantor::ObjectDestroy* m) override { return record("destroy", m->id()); }
    bool dispatchClientUpdate(Vantor::ClientUpdate*, unsigned int tag, udp::endpoint from) override
    {
        return record("steering from " + std::to_string(tag), from.port());
    }
    bool record(const std::string& what, std::uint64_t number)
    {
        calls.push_back(what + " " + std::to_string(number));
        return goOn;
    }

    Strings calls;
    bool goOn = true;
};

// The sockets are not open: a receive that is started fails as soon as the service runs.
class Reception : public testing::Test
{
protected:
    void receiveTcp(std::string bytes, const boost::system::error_code& error = {})
    {
        receiver.handleTCPReceive(error, bytes.data(), bytes.size(), &stream);
    }
    std::string printedByUdp(std::string datagram)
    {
        testing::internal::CaptureStdout();
        receiver.handleUDPReceive({}, datagram.data(), datagram.size(), &receiver.udpSocket);
        return testing::internal::GetCapturedStdout();
    }
    Strings handedOver()
    {
        receiver.calls.clear();
        receiver.getTCPPackets();
        receiver.getUDPPackets();
        return receiver.calls;
    }

    boost::asio::io_service service;
    tcp::socket stream{service};
    Recorder receiver{&service};
    Logger& logger = (*Logger::getInstance() = Logger(), *Logger::getInstance());
};

}  // namespace

TEST_F(Reception, AFrameSplitOverTwoReceivesArrivesOnceAndInOrderAndThenTheEndOfTheStream)
{
    receiveTcp(destroy(1) + destroy(2).substr(0, 3));
    EXPECT_EQ(handedOver(), Strings{"destroy 1"});
    EXPECT_EQ(receiver.leftovers.size(), 1U);
    receiveTcp(destroy(2).substr(3) + destroy(3));
    EXPECT_EQ(handedOver(), (Strings{"destroy 2", "destroy 3"}));
    EXPECT_TRUE(receiver.leftovers.empty());

    receiveTcp(destroy(4));
    testing::internal::CaptureStdout();
    receiveTcp("", boost::asio::error::eof);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "TCP connection CLOSED err:End of file\n");
    EXPECT_EQ(handedOver(), (Strings{"destroy 4", "closed 0"}));
    EXPECT_EQ(handedOver(), Strings()) << "handed over once";
    EXPECT_EQ(logger.packets[Logger::TCP_RECEIVED], 4U) << "a failed receive counts, too";
    EXPECT_EQ(logger.bytes[Logger::TCP_RECEIVED], 20U);
    EXPECT_EQ(logger.messages[Logger::TCP_RECEIVED], 5U);
}

TEST_F(Reception, ADatagramHoldsSeveralFramesAndItsTailIsDiscarded)
{
    EXPECT_EQ(printedByUdp(destroy(1) + destroy(2) + destroy(3).substr(0, 2)),
              "Error has leftovers after UDP 2 of 12 - \x03\n");
    EXPECT_NE(printedByUdp(destroy(3).substr(2) + destroy(4)), "");
    EXPECT_EQ(printedByUdp(destroy(5)), "");
    EXPECT_EQ(handedOver(), (Strings{"destroy 1", "destroy 2", "destroy 5"}))
        << "nothing joins two datagrams";
    EXPECT_EQ(logger.bytes[Logger::UDP_RECEIVED], 12U + 8U + 5U);
    EXPECT_EQ(logger.messages[Logger::UDP_RECEIVED], 3U);
}

TEST_F(Reception, GoesOnAfterEachReceiveUntilAnError)
{
    receiveTcp(destroy(1));
    printedByUdp(destroy(2));
    testing::internal::CaptureStdout();
    EXPECT_EQ(service.run(), 2U) << "one more of each, and both fail";
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "TCP connection CLOSED err:Bad file descriptor\nError in handleUDPReceive: Bad file descriptor "
              "(9)\n");
    EXPECT_EQ(handedOver(), (Strings{"destroy 1", "closed 0", "destroy 2"}));
}

TEST_F(Reception, AFalseAnswerDropsTheRestOfItsQueueOnly)
{
    receiveTcp(destroy(1) + destroy(2));
    printedByUdp(destroy(3) + destroy(4));
    receiver.goOn = false;
    EXPECT_EQ(handedOver(), (Strings{"destroy 1", "destroy 3"}));
    EXPECT_EQ(handedOver(), Strings());
}

TEST_F(Reception, AClientUpdateIsHandedOverWithItsTagAndSenderAndAnUnknownMessageNot)
{
    receiveTcp(steering + steering);
    const auto last = receiver.tcpEvents.back();
    last->senderTag = 9;
    last->endpoint = new udp::endpoint(udp::v4(), 4242);
    EXPECT_EQ(handedOver(), (Strings{"steering from 0 0", "steering from 9 4242"}));
    last->messageType = 6;
    EXPECT_FALSE(receiver.dispatchEvent(last));
}
