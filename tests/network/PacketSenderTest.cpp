#include "network/PacketSender.h"

#include "Common/Protobuf/Object/Object.pb.h"
#include "instrumentation/Logger.h"
#include "network/Messages.h"
#include "tests/network/Support.h"

#include <boost/asio.hpp>

using boost::asio::ip::tcp;
using boost::asio::ip::udp;

TEST(Sending, PrependsTheQportAndReportsFailures)
{
    boost::asio::io_service service;
    udp::socket datagrams(service);
    tcp::acceptor acceptor(service, {boost::asio::ip::address_v4::loopback(), 0});
    tcp::socket stream(service), server(service);
    stream.connect(acceptor.local_endpoint());
    acceptor.accept(server);
    udp::endpoint nobody(boost::asio::ip::address_v4::loopback(), 9);
    const Logger& logger = *Logger::getInstance() = Logger();
    PacketSender sender;
    const auto printedBySending = [&] {
        Vantor::ClientUpdate message;
        messages::set(*message.mutable_orientation(), {1, 2, 3, 4});
        message.set_boosterson(7);
        sender.send(message);
        sender.sendMessageTcp(MessageTypes::CLIENT_UPDATE, message);
        message.Clear();  // the sender has copied it
        service.restart();
        return printedBy([&] { service.run(); });
    };

    sender.setSocket(&datagrams);
    EXPECT_EQ(printedBySending(), "") << "no stream and no endpoint";
    sender.setEndpoint(&nobody);
    EXPECT_EQ(printedBySending(), "Error while sending: Bad file descriptor (code: 9)\n");
    datagrams.open(udp::v4());
    sender.setSocket(&stream);
    sender.setQPort(0xFE34);
    EXPECT_EQ(printedBySending(), "");

    const std::string expected = messages::steeringFrame(0xFE34, {{1, 2, 3, 4}, 7});
    std::string bytes(expected.size(), '?');
    boost::asio::read(server, boost::asio::buffer(bytes));
    EXPECT_EQ(bytes, expected);
    for (const int channel : {Logger::TCP_SENT, Logger::UDP_SENT}) {
        EXPECT_EQ(logger.packets[channel], 1U) << "a failure does not count";
        EXPECT_EQ(logger.bytes[channel], bytes.size());
    }
}
