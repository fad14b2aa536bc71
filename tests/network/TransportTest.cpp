#include "network/AbstractPacketReceiver.h"

#include "Common/Protobuf/Object/Object.pb.h"
#include "instrumentation/Logger.h"
#include "network/Messages.h"
#include "network/PacketSender.h"
#include "tests/network/Support.h"

#include <boost/asio.hpp>
#include <boost/make_shared.hpp>

#include <future>

namespace {

using messages::destroyFrame;

struct Service
{
    boost::asio::io_service service;
};

// Records what is dispatched. The sockets are not open: a receive that is started fails as soon as the
// service runs.
struct Transport : testing::Test, Service, AbstractPacketReceiver
{
    Transport() : AbstractPacketReceiver(&service) {}

    bool dispatchClosedConnection(tcp::socket* socket) override
    {
        calls += socket->is_open() ? "open " : "closed ";
        return goOn;
    }
    bool dispatchObjectDestroy(Vantor::ObjectDestroy* message) override
    {
        calls += std::to_string(message->id()) + ' ';
        return goOn;
    }

    std::string printedByTcp(std::string bytes)
    {
        return printedBy([&] { handleTCPReceive({}, bytes.data(), bytes.size(), &stream); });
    }
    std::string printedByUdp(std::string bytes)
    {
        return printedBy([&] { handleUDPReceive({}, bytes.data(), bytes.size(), &udpSocket); });
    }
    std::string dispatched()
    {
        calls.clear();
        getTCPPackets();
        getUDPPackets();
        return calls;
    }

    tcp::socket stream{service};
    std::string calls;
    bool goOn = true;  // what each handler returns
    Logger& logger = (*Logger::getInstance() = Logger(), *Logger::getInstance());
};

}  // namespace

TEST_F(Transport, AFrameInTwoReceivesArrivesOnce)
{
    printedByTcp(destroyFrame(1) + destroyFrame(2).substr(0, 3));
    EXPECT_EQ(dispatched(), "1 ");
    printedByTcp(destroyFrame(2).substr(3) + destroyFrame(3));
    EXPECT_TRUE(leftovers.empty());
    EXPECT_EQ(dispatched(), "2 3 ");
    EXPECT_EQ(dispatched(), "");
    EXPECT_EQ(logger.bytes[Logger::TCP_RECEIVED], 15U);
    EXPECT_EQ(logger.messages[Logger::TCP_RECEIVED], 3U);

    printedByTcp(destroyFrame(4) + destroyFrame(5));
    printedByUdp(destroyFrame(6) + destroyFrame(7));
    goOn = false;
    EXPECT_EQ(dispatched(), "4 6 ") << "a false result drops the rest of its queue";
    EXPECT_EQ(dispatched(), "");
}

TEST_F(Transport, NothingJoinsTwoDatagrams)
{
    EXPECT_EQ(printedByUdp(destroyFrame(1) + destroyFrame(2) + "\x09"),
              "Error has leftovers after UDP 1 of 11 - ?\n");
    EXPECT_EQ(printedByUdp({"\x09\0\x03\nX\x1B", 6}), "Error has leftovers after UDP 6 of 6 - ?\n");
    EXPECT_EQ(printedByUdp("\xFF\xFF\n[\x1B"), "Error has leftovers after UDP 5 of 5 - \xFF\xFF?[?\n");
    EXPECT_EQ(printedByUdp(destroyFrame(5)), "");
    EXPECT_EQ(dispatched(), "1 2 5 ");
    EXPECT_EQ(logger.bytes[Logger::UDP_RECEIVED], 11U + 6U + 5U + 5U);
    EXPECT_EQ(logger.messages[Logger::UDP_RECEIVED], 3U);
}

TEST_F(Transport, AStalledStreamKeepsOneMebibyte)
{
    EXPECT_EQ(printedByTcp(destroyFrame(1) + std::string(2, '\0')), "");
    std::string printed;
    for (int chunk = 0; chunk < 600; ++chunk) {
        printed += printedByTcp(destroyFrame(2) + std::string(2043, 'x'));
    }
    EXPECT_EQ(printed, "TCP stream stalled by a frame of length 0: ignoring all further bytes\n");
    EXPECT_EQ(leftovers.at(&stream)->size(), 2U + 512U * 2048U);
    EXPECT_EQ(dispatched(), "1 ");
}

TEST_F(Transport, GoesOnAfterEachReceiveUntilAnError)
{
    stream.open(tcp::v4());
    printedByTcp(destroyFrame(1));
    printedByUdp(destroyFrame(2));
    EXPECT_EQ(printedBy([&] { service.run(); }),
              "TCP connection CLOSED err:Transport endpoint is not connected\n"
              "Error in handleUDPReceive: Bad file descriptor (9)\n");
    EXPECT_EQ(dispatched(), "1 closed 2 ");
    EXPECT_EQ(logger.packets[Logger::TCP_RECEIVED], 2U) << "a failed receive counts, too";
}

// Without the locks, events would get lost or the program would crash.
TEST_F(Transport, AnotherThreadMayFillTheQueues)
{
    constexpr std::size_t count = 200000;
    const auto event = boost::make_shared<NetworkEvent>();
    event->kind = NetworkEvent::CLOSED_CONNECTION;
    event->socket = &stream;
    const auto network = std::async(std::launch::async, [&] {
        for (std::size_t n = 0; n < count; ++n) {
            addTCPNetworkEvent(event);
            addUDPNetworkEvent(event);
        }
    });
    std::size_t received = 0;
    while (network.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
        received += dispatched().size();
    }
    EXPECT_EQ(received + dispatched().size(), 2 * count * std::string("closed ").size());
}

TEST_F(Transport, PrependsTheQportAndReportsFailures)
{
    const auto loopback = boost::asio::ip::address_v4::loopback();
    tcp::acceptor acceptor(service, {loopback, 0});
    stream.connect(acceptor.local_endpoint());
    tcp::socket server = acceptor.accept();
    udp::endpoint nobody(loopback, 9);
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

    sender.setSocket(&udpSocket);
    EXPECT_EQ(printedBySending(), "") << "no stream and no endpoint";
    sender.setEndpoint(&nobody);
    EXPECT_EQ(printedBySending(), "Error while sending: Bad file descriptor (code: 9)\n");
    udpSocket.open(udp::v4());
    sender.setSocket(&stream);
    sender.setQPort(0xFE34);
    EXPECT_EQ(printedBySending(), "");

    const std::string expected = messages::steeringFrame(0xFE34, {{1, 2, 3, 4}, 7});
    std::string bytes(expected.size(), '?');
    boost::asio::read(server, boost::asio::buffer(bytes));
    EXPECT_EQ(bytes, expected);
    for (const auto channel : {Logger::TCP_SENT, Logger::UDP_SENT}) {
        EXPECT_EQ(logger.packets[channel], 1U) << "a failure does not count";
        EXPECT_EQ(logger.bytes[channel], bytes.size());
    }
}
