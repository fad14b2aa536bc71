#include "PracticeServer/ClientSession.h"

#include <gtest/gtest.h>
#include <boost/asio/io_context.hpp>

#include <chrono>

using namespace practice;
using boost::asio::ip::tcp;
using namespace std::chrono_literals;

namespace {

constexpr std::size_t queueLimit = 20000;

/// A session and its peer, which does nothing by itself.
class Session : public testing::Test
{
protected:
    boost::asio::io_context io;
    tcp::socket peer{io};
    std::shared_ptr<ClientSession> session;
    std::vector<std::string> ends;

    Session()
    {
        tcp::acceptor acceptor(io, {boost::asio::ip::address_v4::loopback(), 0});
        peer.open(tcp::v4());
        peer.set_option(boost::asio::socket_base::receive_buffer_size(4096));
        peer.connect(acceptor.local_endpoint());
        session = std::make_shared<ClientSession>(acceptor.accept(), queueLimit);
        session->start([](const ClientFrame&) {},
                       [this](const std::string& fault) { ends.push_back(fault); });
    }
    void run(std::chrono::milliseconds time)
    {
        io.restart();
        io.run_for(time);
    }
    /// Runs what is ready, without waiting.
    void drain()
    {
        io.restart();
        io.poll();
    }
};

}  // namespace

TEST_F(Session, APeerThatDoesNotReadIsCutOffWithAReason)
{
    const std::string frame(1000, 'x');
    std::size_t sentBytes = 0;
    while (ends.empty() && sentBytes < 50'000'000) {
        session->send(frame);
        sentBytes += frame.size();
        drain();
    }
    ASSERT_EQ(ends.size(), 1U);
    EXPECT_NE(ends[0].find("does not read"), std::string::npos);
    session->send(frame);
    run(20ms);
    EXPECT_EQ(ends.size(), 1U);
}

TEST_F(Session, TheEndIsNeverReportedFromWithinSend)
{
    session->send(std::string(queueLimit + 1, 'x'));
    EXPECT_TRUE(ends.empty());
    run(20ms);
    EXPECT_EQ(ends.size(), 1U);
}

TEST_F(Session, WhatIsSentArrivesInOrder)
{
    std::string expected;
    for (int i = 0; i < 200; ++i) {
        const std::string frame(37, static_cast<char>('a' + i % 26));
        session->send(frame);
        expected += frame;
        drain();
    }
    run(50ms);
    std::string received(expected.size(), ' ');
    std::size_t got = 0;
    while (got < received.size()) {
        got += peer.read_some(boost::asio::buffer(&received[got], received.size() - got));
    }
    EXPECT_EQ(received, expected);
}

TEST_F(Session, HangingUpIsReportedOnceAndWithoutFault)
{
    peer.close();
    run(200ms);
    EXPECT_EQ(ends, std::vector<std::string>{""});
}
