#include "server/net/ClientSession.h"

#include "peer/Endpoints.h"

#include <gtest/gtest.h>

using namespace practice;
using boost::asio::ip::tcp;

namespace {

struct Connection
{
    peer::Endpoints ends;
    tcp::acceptor acceptor{ends.io, {boost::asio::ip::address_v4::loopback(), 0}};
    peer::StreamEnd& client = ends.connect(acceptor.local_endpoint().port());
    std::shared_ptr<ClientSession> session = std::make_shared<ClientSession>(acceptor.accept(), 20000);
    int frames = 0;

    Connection()
    {
        session->start([this](const framing::ClientFrame&) { ++frames; });
    }
    bool reaches(ClientSession::State state)
    {
        return ends.await([&] { return session->state() == state; });
    }
};

}  // namespace

TEST(ClientSession, CutsOffAPeerThatDoesNotRead)
{
    Connection connection;
    connection.client.paused = true;
    connection.client.socket.set_option(boost::asio::socket_base::receive_buffer_size(1));
    ClientSession& session = *connection.session;
    for (int sent = 0; sent < 1000 && session.state() == ClientSession::State::open; ++sent) {
        session.send(std::string(1000, 'x'));
        session.flush();
        connection.ends.poll();
    }
    EXPECT_EQ(session.state(), ClientSession::State::cutOff);
    EXPECT_EQ(session.cutOffReason(), "does not read what it is sent, 20000 bytes wait");
    session.send("x");
    session.flush();
    connection.client.paused = false;
    EXPECT_TRUE(connection.ends.await([&] { return connection.client.end.failed(); }));
}

TEST(ClientSession, SendsEverythingInOrderToAPeerThatReads)
{
    Connection connection;
    std::string sent;
    for (int i = 0; i < 500; ++i) {
        const std::string frame = std::to_string(i) + ' ';
        sent += frame;
        connection.session->send(frame);
        connection.session->flush();
    }
    EXPECT_TRUE(connection.ends.await([&] { return connection.client.received == sent; }));
}

TEST(ClientSession, TellsHowItEnded)
{
    Connection half;
    half.client.send({1, 0, 1});
    half.client.finishSending();
    EXPECT_TRUE(half.reaches(ClientSession::State::hungUp)) << "half a frame, then the end";
    EXPECT_EQ(half.session->takeReceivedBytes(), 3U);
    EXPECT_EQ(half.session->takeReceivedBytes(), 0U);
    Connection reset;
    reset.client.reset();
    EXPECT_TRUE(reset.reaches(ClientSession::State::hungUp));
    Connection broken;
    broken.client.send(std::string("\1\0\1\0\4", 5) + std::string(9, '\0'));
    EXPECT_TRUE(broken.reaches(ClientSession::State::cutOff));
    EXPECT_EQ(broken.frames, 1);
    EXPECT_EQ(broken.session->cutOffReason(), "sent bytes on TCP that are no message");
    Connection closed;
    closed.session->close();
    EXPECT_TRUE(closed.ends.await([&] { return closed.client.end == boost::asio::error::eof; }));
    EXPECT_EQ(closed.session->state(), ClientSession::State::closed);
}
