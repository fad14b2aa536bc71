#include "network/PacketSender.h"

#include "instrumentation/Logger.h"
#include "tests/network/Loopback.h"
#include "tests/network/Steering.h"
#include "tests/support/Messages.h"

#include <gtest/gtest.h>

namespace {

using boost::asio::ip::udp;

class Sending : public testing::Test
{
protected:
    std::uint64_t sent() const
    {
        return logger.packets[Logger::TCP_SENT] + logger.packets[Logger::UDP_SENT] +
               logger.bytes[Logger::TCP_SENT] + logger.bytes[Logger::UDP_SENT];
    }
    void configureUdp()
    {
        sender.setSocket(&socket);
        sender.setEndpoint(&server);
    }
    std::string printedBySending(Vantor::ClientUpdate message)
    {
        testing::internal::CaptureStdout();
        sender.send(message);
        service.restart();
        service.run_for(std::chrono::milliseconds(200));
        return testing::internal::GetCapturedStdout();
    }

    boost::asio::io_service service;
    loopback::Peer peer{service};
    udp::socket socket{service, udp::endpoint(udp::v4(), 0)};
    udp::endpoint server = peer.socket.local_endpoint();
    Logger& logger = (*Logger::getInstance() = Logger(), *Logger::getInstance());
    PacketSender& sender = (*PacketSender::getInstance() = PacketSender(), *PacketSender::getInstance());
};

}  // namespace

TEST_F(Sending, WithoutSocketsDropsMessagesWithoutAWord)
{
    Vantor::ClientUpdate message = steering(1);
    EXPECT_EQ(printedBySending(message), "");
    sender.sendMessageTcp(MessageTypes::CLIENT_UPDATE, message);
    sender.setSocket(&socket);
    EXPECT_EQ(printedBySending(message), "") << "a socket, but no endpoint";
    EXPECT_EQ(sent(), 0U);
    EXPECT_EQ(peer.socket.available(), 0U);
}

TEST_F(Sending, PutsTheQportInFrontOfTheFrame)
{
    configureUdp();
    sender.setQPort(0x1234);
    Vantor::ObjectDestroy nineBytes;
    nineBytes.set_id(std::uint64_t{1} << 55U);
    sender.sendMessageUdp(MessageTypes::CLIENT_UPDATE, nineBytes);
    nineBytes.set_id(0);  // the bytes are already on their way
    ASSERT_TRUE(loopback::runUntil(service, [&] { return sent() > 0; }));
    EXPECT_EQ(peer.receive(), std::string("\x34\x12\x0A\x00\x04\x08\x80\x80\x80\x80\x80\x80\x80\x40", 14));
    EXPECT_EQ(logger.packets[Logger::UDP_SENT], 1U);
    EXPECT_EQ(logger.bytes[Logger::UDP_SENT], 14U);
    EXPECT_EQ(sent(), 15U) << "and nothing counts as sent over TCP";
}

TEST_F(Sending, SendsAClientUpdateAsOneDatagram)
{
    configureUdp();
    EXPECT_EQ(printedBySending(steering(0x40000000U)), "");
    const auto arrived = support::parseSteering(peer.receive());
    ASSERT_TRUE(arrived);
    EXPECT_EQ(arrived->qport, 0) << "no Welcome yet";
    EXPECT_EQ(arrived->boosters, 0x40000000U);
    EXPECT_EQ(arrived->orientation, Quaternion(1, 2, 3, 4));
}

TEST_F(Sending, WritesTheSameBytesToTheStream)
{
    loopback::Connection connection(service);
    sender.setSocket(&connection.client);
    sender.setQPort(0xFFFE);
    Vantor::ObjectDestroy message;
    message.set_id(1);
    sender.sendMessageTcp(MessageTypes::OBJECT_DESTROY, message);
    ASSERT_TRUE(loopback::runUntil(service, [&] { return sent() > 0; }));
    std::string bytes(7, '?');
    boost::asio::read(connection.server, boost::asio::buffer(bytes));
    EXPECT_EQ(bytes, std::string("\xFE\xFF\x03\x00\x03\x08\x01", 7));
    EXPECT_EQ(logger.packets[Logger::TCP_SENT], 1U);
    EXPECT_EQ(sent(), 8U);
}

TEST_F(Sending, AFailurePrintsOneLineAndLaterSendsGoOn)
{
    configureUdp();
    socket.close();
    EXPECT_EQ(printedBySending(steering(1)), "Error while sending: Bad file descriptor (code: 9)\n");
    EXPECT_EQ(sent(), 0U);
    udp::socket next(service, udp::endpoint(udp::v4(), 0));
    sender.setSocket(&next);
    EXPECT_EQ(printedBySending(steering(2)), "");
    EXPECT_EQ(logger.packets[Logger::UDP_SENT], 1U);
}
