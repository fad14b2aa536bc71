#include "network/AbstractPacketReceiver.h"

#include "Common/Protobuf/Object/Object.pb.h"
#include "instrumentation/Logger.h"
#include "network/NetworkEvent.h"
#include "tests/network/Loopback.h"
#include "tests/support/Messages.h"

#include <gtest/gtest.h>
#include <boost/make_shared.hpp>

#include <vector>

namespace {

using Strings = std::vector<std::string>;

// Writes down what is handed over; every handler answers `goOn`.
class Recorder : public AbstractPacketReceiver
{
public:
    explicit Recorder(boost::asio::io_service* service) : AbstractPacketReceiver(service)
    {
        udpSocket.open(udp::v4());
        udpSocket.bind(udp::endpoint(loopback::address, 0));
    }

    bool dispatchNewConnection(tcp::socket* socket) override { return record("new", socket != nullptr); }
    bool dispatchClosedConnection(tcp::socket* socket) override
    {
        return record("closed", socket != nullptr);
    }
    bool dispatchWelcome(Vantor::Welcome* m) override { return record("welcome", m->id()); }
    bool dispatchObjectInfo(Vantor::ObjectInfo* m) override { return record("info", m->id()); }
    bool dispatchObjectUpdate(Vantor::ObjectUpdate* m) override { return record("update", m->id()); }
    bool dispatchObjectDestroy(Vantor::ObjectDestroy* m) override { return record("destroy", m->id()); }
    bool dispatchClientUpdate(Vantor::ClientUpdate* m, unsigned int tag, udp::endpoint from) override
    {
        return record("steering " + std::to_string(tag) + " from " + std::to_string(from.port()),
                      m->boosterson());
    }

    Strings calls;
    bool goOn = true;

private:
    bool record(const std::string& what, std::uint64_t number)
    {
        calls.push_back(what + " " + std::to_string(number));
        return goOn;
    }
};

class Reception : public testing::Test
{
protected:
    Strings handedOver()
    {
        receiver.calls.clear();
        receiver.getTCPPackets();
        receiver.getUDPPackets();
        return receiver.calls;
    }
    void awaitTcpBytes(std::uint64_t total)
    {
        ASSERT_TRUE(loopback::runUntil(service, [&] { return logger.bytes[Logger::TCP_RECEIVED] >= total; }));
    }
    void awaitDatagrams(std::uint64_t total)
    {
        ASSERT_TRUE(
            loopback::runUntil(service, [&] { return logger.packets[Logger::UDP_RECEIVED] >= total; }));
    }

    boost::asio::io_service service;
    Recorder receiver{&service};
    loopback::Connection connection{service};
    loopback::Peer peer{service};
    Logger& logger = (*Logger::getInstance() = Logger(), *Logger::getInstance());
};

}  // namespace

TEST_F(Reception, ATcpFrameSplitOverTwoReceivesArrivesOnceAndInOrder)
{
    receiver.asyncReceive(&connection.client);
    const std::string whole = support::destroy(2);
    connection.write(support::destroy(1) + whole.substr(0, 3));
    awaitTcpBytes(8);
    EXPECT_EQ(handedOver(), Strings{"destroy 1"});
    EXPECT_EQ(receiver.leftovers.size(), 1U);

    connection.write(whole.substr(3) + support::destroy(3));
    awaitTcpBytes(15);
    EXPECT_EQ(handedOver(), (Strings{"destroy 2", "destroy 3"}));
    EXPECT_TRUE(receiver.leftovers.empty());
    EXPECT_EQ(handedOver(), Strings()) << "handed over once";
    EXPECT_EQ(logger.packets[Logger::TCP_RECEIVED], 2U);
    EXPECT_EQ(logger.bytes[Logger::TCP_RECEIVED], 15U);
    EXPECT_EQ(logger.messages[Logger::TCP_RECEIVED], 3U);
}

TEST_F(Reception, TheEndOfTheStreamFollowsTheLastMessage)
{
    receiver.asyncReceive(&connection.client);
    connection.write(support::destroy(1));
    connection.server.close();
    testing::internal::CaptureStdout();
    loopback::runUntil(service, [&] { return !connection.client.is_open(); });
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "TCP connection CLOSED err:End of file\n");
    EXPECT_EQ(handedOver(), (Strings{"destroy 1", "closed 1"}));
    EXPECT_EQ(logger.packets[Logger::TCP_RECEIVED], 2U) << "a failed receive counts, too";
    EXPECT_EQ(logger.bytes[Logger::TCP_RECEIVED], 5U);
}

TEST_F(Reception, ADatagramHoldsSeveralFramesAndItsTailIsDiscarded)
{
    receiver.asyncReceive(&receiver.udpSocket);
    testing::internal::CaptureStdout();
    peer.sendTo(receiver.udpSocket,
                support::destroy(1) + support::destroy(2) + support::destroy(3).substr(0, 2));
    awaitDatagrams(1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Error has leftovers after UDP 2 of 12 - \x03\n");
    peer.sendTo(receiver.udpSocket, support::destroy(3).substr(2) + support::destroy(4));
    peer.sendTo(receiver.udpSocket, support::destroy(5));
    testing::internal::CaptureStdout();
    awaitDatagrams(3);
    EXPECT_NE(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(handedOver(), (Strings{"destroy 1", "destroy 2", "destroy 5"}))
        << "nothing joins two datagrams";
    EXPECT_EQ(logger.bytes[Logger::UDP_RECEIVED], 12U + 8U + 5U);
    EXPECT_EQ(logger.messages[Logger::UDP_RECEIVED], 3U);
}

TEST_F(Reception, AnErrorEndsUdpButNotTcp)
{
    receiver.asyncReceive(&receiver.udpSocket);
    receiver.asyncReceive(&connection.client);
    testing::internal::CaptureStdout();
    receiver.udpSocket.cancel();
    awaitDatagrams(1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Error in handleUDPReceive: Operation canceled (125)\n");

    peer.sendTo(receiver.udpSocket, support::destroy(1));
    connection.write(support::destroy(2));
    awaitTcpBytes(5);
    service.restart();
    service.run_for(std::chrono::milliseconds(50));
    EXPECT_EQ(handedOver(), Strings{"destroy 2"});
    EXPECT_EQ(receiver.udpSocket.available(), 5U) << "the datagram is there, but nobody takes it";
}

TEST_F(Reception, AFalseAnswerDropsTheRestOfItsQueueOnly)
{
    receiver.asyncReceive(&connection.client);
    receiver.asyncReceive(&receiver.udpSocket);
    connection.write(support::destroy(1) + support::destroy(2) + support::destroy(3));
    awaitTcpBytes(15);
    peer.sendTo(receiver.udpSocket, support::destroy(4) + support::destroy(5));
    awaitDatagrams(1);
    receiver.goOn = false;
    EXPECT_EQ(handedOver(), (Strings{"destroy 1", "destroy 4"}));
    receiver.goOn = true;
    EXPECT_EQ(handedOver(), Strings());
}

namespace {

boost::shared_ptr<NetworkEvent> eventOf(unsigned int kind, unsigned int type,
                                        google::protobuf::Message* message)
{
    auto event = boost::make_shared<NetworkEvent>();
    event->kind = kind;
    event->messageType = type;
    event->message = message;
    return event;
}

template <class M>
M* withId(std::uint64_t id)
{
    auto* message = new M;
    message->set_id(id);
    return message;
}

}  // namespace

TEST_F(Reception, EachEventFindsItsHandler)
{
    const struct
    {
        boost::shared_ptr<NetworkEvent> event;
        Strings calls;
    } table[] = {{eventOf(0, 1, withId<Vantor::ObjectInfo>(11)), {"info 11"}},
                 {eventOf(0, 2, withId<Vantor::ObjectUpdate>(12)), {"update 12"}},
                 {eventOf(0, 3, withId<Vantor::ObjectDestroy>(13)), {"destroy 13"}},
                 {eventOf(0, 4, new Vantor::ClientUpdate), {"steering 0 from 0 0"}},
                 {eventOf(0, 5, withId<Vantor::Welcome>(15)), {"welcome 15"}},
                 {eventOf(1, 1, nullptr), {"new 0"}},
                 {eventOf(2, 5, nullptr), {"closed 0"}},
                 {eventOf(0, 0, nullptr), {}},
                 {eventOf(0, 6, nullptr), {}},
                 {eventOf(3, 1, nullptr), {}}};
    AbstractPacketReceiver base(&service);
    for (const auto& [event, calls] : table) {
        receiver.calls.clear();
        EXPECT_EQ(receiver.dispatchEvent(event), !calls.empty());
        EXPECT_EQ(receiver.calls, calls);
        EXPECT_EQ(base.dispatchEvent(event), !calls.empty()) << "by itself it lets everything known pass";
    }
    const auto steering = table[3].event;
    steering->senderTag = 9;
    steering->endpoint = new boost::asio::ip::udp::endpoint(loopback::address, 4242);
    receiver.calls.clear();
    receiver.dispatchEvent(steering);
    EXPECT_EQ(receiver.calls, Strings{"steering 9 from 4242 0"});
}
