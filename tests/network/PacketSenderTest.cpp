#include "network/PacketSender.h"

#include "Common/Protobuf/Object/Object.pb.h"
#include "instrumentation/Logger.h"
#include "tests/network/Steering.h"

#include <gtest/gtest.h>
#include <boost/asio.hpp>

using boost::asio::ip::tcp;
using boost::asio::ip::udp;

TEST(Sending, PutsTheQportInFrontOfTheFrameInADatagramAndInTheStream)
{
    boost::asio::io_service service;
    const auto here = boost::asio::ip::address_v4::loopback();
    udp::socket peer(service, {here, 0}), datagrams(service, udp::v4());
    tcp::socket stream(service), closed(service), server(service);
    tcp::acceptor acceptor(service, {here, 0});
    stream.connect(acceptor.local_endpoint());
    acceptor.accept(server);
    udp::endpoint endpoint = peer.local_endpoint();
    const Logger& logger = *Logger::getInstance() = Logger();
    PacketSender sender;
    const auto printedBySending = [&] {
        testing::internal::CaptureStdout();
        Vantor::ClientUpdate message;
        message.ParseFromString(steering.substr(3));
        sender.send(message);
        sender.sendMessageTcp(MessageTypes::CLIENT_UPDATE, message);
        message.Clear();  // the bytes are already on their way
        service.restart();
        service.run();
        return testing::internal::GetCapturedStdout();
    };

    sender.setSocket(&datagrams);
    EXPECT_EQ(printedBySending(), "") << "no stream and no endpoint";
    sender.setEndpoint(&endpoint);
    sender.setSocket(&closed);
    EXPECT_EQ(printedBySending(), "Error while sending: Bad file descriptor (code: 9)\n");
    sender.setSocket(&stream);
    sender.setQPort(0xFE34);
    EXPECT_EQ(printedBySending(), "");

    std::string bytes(2 + steering.size(), '?');
    for (const std::string& qport : {std::string(2, '\0'), std::string("\x34\xFE")}) {
        peer.receive(boost::asio::buffer(bytes));
        EXPECT_EQ(bytes, qport + steering);
    }
    boost::asio::read(server, boost::asio::buffer(bytes));
    EXPECT_EQ(bytes, "\x34\xFE" + steering);
    EXPECT_EQ(logger.packets[Logger::TCP_SENT], 1U) << "a failure does not count";
    EXPECT_EQ(logger.bytes[Logger::TCP_SENT], bytes.size());
    EXPECT_EQ(logger.packets[Logger::UDP_SENT], 2U);
}
