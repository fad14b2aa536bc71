#include "server/net/ClientSession.h"

#include "peer/Endpoints.h"

#include <gtest/gtest.h>

using namespace practice;

namespace {

/// A session and its client in one thread.
struct Connection
{
    peer::Endpoints ends;
    boost::asio::ip::tcp::acceptor acceptor{ends.io, {boost::asio::ip::address_v4::loopback(), 0}};
    peer::StreamEnd& client;
    std::shared_ptr<ClientSession> session;
    int frames = 0;

    Connection() : client(ends.add(smallSocket()))
    {
        client.socket.connect(acceptor.local_endpoint());
        session = std::make_shared<ClientSession>(acceptor.accept(), 20000);
        session->start([this](const framing::ClientFrame&) { ++frames; });
    }
    boost::asio::ip::tcp::socket smallSocket()
    {
        boost::asio::ip::tcp::socket socket(ends.io, boost::asio::ip::tcp::v4());
        socket.set_option(boost::asio::socket_base::receive_buffer_size(1));
        return socket;
    }
    bool reaches(ClientSession::State state)
    {
        return ends.await([&] { return session->state() == state; });
    }
};

}  // namespace

TEST(ClientSession, CutsOffAClientThatDoesNotRead)
{
    Connection c;
    std::string sent;
    const auto send = [&](char byte) {
        sent += std::string(1000, byte);
        c.session->send(std::string(1000, byte));
        c.session->flush();
        c.ends.poll();
    };
    for (char byte = 'a'; byte <= 'z'; ++byte) {
        send(byte);
    }
    EXPECT_TRUE(c.ends.await([&] { return c.client.received == sent; })) << "it reads";
    c.client.paused = true;
    for (int i = 0; i < 100; ++i) {
        send('x');
    }
    EXPECT_EQ(c.session->state(), ClientSession::State::cutOff);
    EXPECT_EQ(c.session->cutOffReason(), "does not read what it is sent, 20000 bytes wait");
}

TEST(ClientSession, TellsHowItEnded)
{
    Connection half;
    half.client.send({1, 0, 1});
    half.client.finishSending();
    EXPECT_TRUE(half.reaches(ClientSession::State::hungUp)) << "half a frame, then the end";
    EXPECT_EQ(half.session->takeReceivedBytes(), 3U);
    EXPECT_EQ(half.session->takeReceivedBytes(), 0U);
    Connection broken;
    broken.client.send(std::string("\1\0\1\0\4", 5) + std::string(9, '\0'));
    EXPECT_TRUE(broken.reaches(ClientSession::State::cutOff));
    EXPECT_EQ(broken.frames, 1);
}
