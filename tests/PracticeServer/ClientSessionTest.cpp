#include "PracticeServer/ClientSession.h"

#include <gtest/gtest.h>
#include <boost/asio/io_context.hpp>

#include <chrono>

using namespace practice;
using boost::asio::ip::tcp;

TEST(Session, APeerThatDoesNotReadIsCutOffOnceWithAReasonButNeverFromWithinSend)
{
    constexpr std::size_t queueLimit = 20000;
    boost::asio::io_context io;
    tcp::acceptor acceptor(io, {boost::asio::ip::address_v4::loopback(), 0});
    tcp::socket peer(io);
    peer.connect(acceptor.local_endpoint());
    const auto session = std::make_shared<ClientSession>(acceptor.accept(), queueLimit);
    std::vector<std::string> ends;
    session->start([](const ClientFrame&) {}, [&](const std::string& fault) { ends.push_back(fault); });
    const std::string frame(1000, 'x');
    for (int sent = 0; ends.empty() && sent < 50'000; ++sent) {
        session->send(frame);
        session->flush();
        ASSERT_TRUE(ends.empty());
        io.restart();
        io.poll();
    }
    session->send(frame);
    io.restart();
    io.run_for(std::chrono::milliseconds(20));
    ASSERT_EQ(ends.size(), 1U);
    EXPECT_NE(ends[0].find("does not read"), std::string::npos);
}
