#include "network/AbstractPacketReceiver.h"

#include "Common/Protobuf/Object/Object.pb.h"
#include "instrumentation/Logger.h"
#include "network/Messages.h"
#include "peer/ScriptedServer.h"

#include <gtest/gtest.h>

namespace {

using messages::destroyFrame;
using tcp = boost::asio::ip::tcp;

// Writes down what is handed over; every handler answers `goOn`.
class Recorder : public AbstractPacketReceiver
{
public:
    using AbstractPacketReceiver::AbstractPacketReceiver;

    bool dispatchClosedConnection(tcp::socket*) override
    {
        calls += "closed ";
        return goOn;
    }
    bool dispatchObjectDestroy(Vantor::ObjectDestroy* message) override
    {
        calls += std::to_string(message->id()) + ' ';
        return goOn;
    }

    std::string calls;
    bool goOn = true;
};

// The sockets are not open: a receive that is started fails as soon as the service runs.
class Reception : public testing::Test
{
protected:
    void receiveTcp(std::string bytes) { receiver.handleTCPReceive({}, bytes.data(), bytes.size(), &stream); }
    std::string printedByUdp(std::string datagram)
    {
        testing::internal::CaptureStdout();
        receiver.handleUDPReceive({}, datagram.data(), datagram.size(), &receiver.udpSocket);
        return testing::internal::GetCapturedStdout();
    }
    std::string handedOver()
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

TEST_F(Reception, AFrameSplitOverTwoReceivesArrivesOnceAndInOrder)
{
    receiveTcp(destroyFrame(1) + destroyFrame(2).substr(0, 3));
    EXPECT_EQ(handedOver(), "1 ");
    receiveTcp(destroyFrame(2).substr(3) + destroyFrame(3));
    EXPECT_TRUE(receiver.leftovers.empty());
    EXPECT_EQ(handedOver(), "2 3 ");
    EXPECT_EQ(handedOver(), "");
    EXPECT_EQ(logger.bytes[Logger::TCP_RECEIVED], 15U);
    EXPECT_EQ(logger.messages[Logger::TCP_RECEIVED], 3U);
}

TEST_F(Reception, ADatagramHoldsSeveralFramesAndItsTailIsDiscarded)
{
    EXPECT_EQ(printedByUdp(destroyFrame(1) + destroyFrame(2) + destroyFrame(3).substr(0, 2)),
              "Error has leftovers after UDP 2 of 12 - \x03\n");
    EXPECT_NE(printedByUdp(destroyFrame(3).substr(2) + destroyFrame(4)), "");
    EXPECT_EQ(printedByUdp(destroyFrame(5)), "");
    EXPECT_EQ(handedOver(), "1 2 5 ") << "nothing joins two datagrams";
    EXPECT_EQ(logger.bytes[Logger::UDP_RECEIVED], 12U + 8U + 5U);
    EXPECT_EQ(logger.messages[Logger::UDP_RECEIVED], 3U);
}

TEST_F(Reception, GoesOnAfterEachReceiveUntilAnError)
{
    receiveTcp(destroyFrame(1));
    printedByUdp(destroyFrame(2));
    testing::internal::CaptureStdout();
    EXPECT_EQ(service.run(), 2U) << "one more of each, and both fail";
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "TCP connection CLOSED err:Bad file descriptor\nError in handleUDPReceive: Bad file descriptor "
              "(9)\n");
    EXPECT_EQ(handedOver(), "1 closed 2 ");
    EXPECT_EQ(logger.packets[Logger::TCP_RECEIVED], 2U) << "a failed receive counts, too";
}

TEST_F(Reception, AFalseAnswerDropsTheRestOfItsQueueOnly)
{
    receiveTcp(destroyFrame(1) + destroyFrame(2));
    printedByUdp(destroyFrame(3) + destroyFrame(4));
    receiver.goOn = false;
    EXPECT_EQ(handedOver(), "1 3 ");
    EXPECT_EQ(handedOver(), "");
}
