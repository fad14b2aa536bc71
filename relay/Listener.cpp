#include "relay/Listener.h"

#include "relay/Recording.h"

#include <chrono>
#include <utility>

namespace relay {

using boost::asio::ip::tcp;
using boost::system::error_code;

namespace {

/// When no connection can be taken, as without descriptors.
constexpr std::chrono::milliseconds acceptRetry{200};

}  // namespace

Listener::Listener(boost::asio::io_context& io, std::uint16_t port, LogOnce::Log log)
    : ports(io, port),
      portNumber(ports.number()),
      acceptPause(io),
      shortage(std::move(log)),
      received(largestChunk)
{
}

void Listener::open(OnConnection onConnection_, OnDatagram onDatagram_)
{
    onConnection = std::move(onConnection_);
    onDatagram = std::move(onDatagram_);
    accept();
    receive();
}

void Listener::close()
{
    closed = true;       // a handler that is already on its way must not start anything anew
    error_code ignored;  // closing is all we can do
    ports.acceptor.close(ignored);
    ports.udp.close(ignored);
    acceptPause.cancel(ignored);
}

void Listener::accept()
{
    ports.acceptor.async_accept([this](const error_code& error, tcp::socket socket) {
        if (closed) {
            return;
        }
        if (error) {
            pauseAccepting(error);
            return;
        }
        shortage.clear();
        onConnection(std::move(socket));
        accept();
    });
}

void Listener::pauseAccepting(const error_code& error)
{
    shortage.log("cannot take connections: " + error.message());
    acceptPause.expires_after(acceptRetry);
    acceptPause.async_wait([this](const error_code& cancelled) {
        if (!closed && !cancelled) {
            accept();
        }
    });
}

void Listener::receive()
{
    ports.udp.async_receive_from(boost::asio::buffer(received), sender,
                                 [this](const error_code& error, std::size_t bytes) {
                                     if (closed) {
                                         return;
                                     }
                                     if (!error) {
                                         onDatagram(sender, received.data(), bytes);
                                     }
                                     receive();
                                 });
}

}  // namespace relay
