#include "server/net/ClientSession.h"

#include <gtest/gtest.h>
#include <boost/asio/io_context.hpp>

using namespace practice;
using boost::asio::ip::tcp;

TEST(Session, APeerThatDoesNotReadIsCutOffOnceWithAReasonButNeverFromWithinSend)
{
    boost::asio::io_context io;
    tcp::acceptor acceptor(io, {boost::asio::ip::address_v4::loopback(), 0});
    tcp::socket peer(io, tcp::v4());
    peer.set_option(boost::asio::socket_base::receive_buffer_size(1));
    peer.connect(acceptor.local_endpoint());
    const auto session = std::make_shared<ClientSession>(acceptor.accept(), 20000);
    std::string ends;
    session->start([](const framing::ClientFrame&) {}, [&](const std::string& fault) { ends += fault; });
    for (int sent = 0; sent < 100; ++sent) {
        const std::string endsBefore = ends;
        session->send(std::string(1000, 'x'));
        session->flush();
        ASSERT_EQ(ends, endsBefore);
        io.restart();
        io.poll();
    }
    EXPECT_EQ(ends, "does not read what it is sent, 20000 bytes wait");
}
