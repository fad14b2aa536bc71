#include "network/NetworkHelper.h"

#include "Common/Protobuf/Object/Object.pb.h"
#include "network/PacketReceiver.h"
#include "network/PacketSender.h"
#include "tests/network/Loopback.h"
#include "tests/support/Messages.h"
#include "tests/support/Waiting.h"

#include <gtest/gtest.h>

#include <unistd.h>
#include <memory>

namespace {

// In a child process: 0 where the connection failed as it should, with its diagnostics on standard error.
void connectAndExit(const std::string& host, const std::string& port)
{
    dup2(STDERR_FILENO, STDOUT_FILENO);
    NetworkHelper* helper = NetworkHelper::getInstance();
    const bool connected = helper->connect(host, port, 1000);
    std::_Exit(connected || helper->tcpSocket || helper->getThisPlayerID() != 0 ? 1 : 0);
}

}  // namespace

TEST(ConnectDeathTest, AnUnknownHostIsNamedTogetherWithTheReason)
{
    EXPECT_EXIT(connectAndExit("no-such-host.invalid", "21042"), testing::ExitedWithCode(0),
                "^Could not connect to no-such-host.invalid:21042\nException: [^\n]+\n$");
}

TEST(ConnectDeathTest, ARefusedPortIsNamedTogetherWithTheReason)
{
    boost::asio::io_service service;
    const loopback::tcp::socket bound(service, {loopback::address, 0});  // taken, but nobody listens
    const std::string port = std::to_string(bound.local_endpoint().port());
    EXPECT_EXIT(connectAndExit("127.0.0.1", port), testing::ExitedWithCode(0),
                "^Attempting to connect to 127.0.0.1:" + port + "\nCould not connect to 127.0.0.1:" + port +
                    "\nException: connect: Connection refused[^\n]*\n$");
}

TEST(Connect, TheServerHearsTheClientAtTheSamePortNumberAndIsHeard)
{
    using support::eventually;
    boost::asio::io_service service;
    loopback::tcp::acceptor acceptor(service, {loopback::address, 0});
    const unsigned short port = acceptor.local_endpoint().port();
    loopback::udp::socket datagrams(service, {loopback::address, port});
    NetworkHelper* helper = NetworkHelper::getInstance();
    helper->dispatchRecievedPackages();
    EXPECT_EQ(helper->getThisPlayerID(), 0U) << "before anything";

    testing::internal::CaptureStdout();
    ASSERT_TRUE(helper->connect("127.0.0.1", std::to_string(port), 1000));
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Attempting to connect to 127.0.0.1:" + std::to_string(port) + "\nConnected!\n");
    loopback::tcp::socket server = acceptor.accept();
    EXPECT_EQ(server.available(), 0U) << "the client does not introduce itself";

    boost::asio::write(server, boost::asio::buffer(support::welcome(77, 0x1234)));
    EXPECT_TRUE(
        eventually([&] { return helper->dispatchRecievedPackages(), helper->getThisPlayerID() == 77; }));

    Vantor::ObjectDestroy small;
    small.set_id(1);
    PacketSender::getInstance()->sendMessageUdp(MessageTypes::OBJECT_DESTROY, small);
    std::string datagram(7, '?');
    ASSERT_TRUE(eventually([&] { return datagrams.available() > 0; }));
    datagrams.receive(boost::asio::buffer(datagram));
    EXPECT_EQ(datagram, std::string("\x34\x12\x03\x00\x03\x08\x01", 7));

    helper->disconnect();
    const std::unique_ptr<loopback::udp::endpoint> endpoint(PacketSender::getInstance()->serverEndpoint);
    *PacketSender::getInstance() = PacketSender();
    EXPECT_TRUE(helper->ioService.stopped());
    EXPECT_TRUE(helper->tcpSocket->is_open());
}
