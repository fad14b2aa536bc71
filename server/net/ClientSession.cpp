#include "server/net/ClientSession.h"

#include "instrumentation/Logger.h"

#include <boost/asio/post.hpp>
#include <boost/asio/write.hpp>

#include <utility>

namespace practice {

ClientSession::ClientSession(boost::asio::ip::tcp::socket socket_, std::size_t queueLimit_)
    : socket(std::move(socket_)), queueLimit(queueLimit_)
{
    boost::system::error_code ignored;  // a peer that is gone already shows at the first receive
    remote = socket.remote_endpoint(ignored);
    socket.set_option(boost::asio::ip::tcp::no_delay(true), ignored);
    // Left alone, the system's own queue for a client that does not read would grow to megabytes.
    socket.set_option(boost::asio::socket_base::send_buffer_size(static_cast<int>(queueLimit / 2)), ignored);
}

void ClientSession::start(Frame onFrame_, End onEnd_)
{
    onFrame = std::move(onFrame_);
    onEnd = std::move(onEnd_);
    receive();
}

void ClientSession::send(const std::string& frame)
{
    if (ended) {
        return;
    }
    if (queued.size() + inFlight.size() + frame.size() > queueLimit) {
        end("does not read what it is sent, " + std::to_string(queued.size() + inFlight.size()) +
            " bytes wait");
        return;
    }
    queued += frame;
}

void ClientSession::flush()
{
    if (!ended && inFlight.empty() && !queued.empty()) {
        write();
    }
}

void ClientSession::close()
{
    ended = true;
    onFrame = nullptr;
    onEnd = nullptr;
    shutDown();
}

void ClientSession::receive()
{
    socket.async_receive(
        boost::asio::buffer(received),
        [self = shared_from_this()](const boost::system::error_code& error, std::size_t bytes) {
            self->handleReceive(error, bytes);
        });
}

void ClientSession::handleReceive(const boost::system::error_code& error, std::size_t bytes)
{
    if (ended) {
        return;
    }
    if (error) {
        end("");
        return;
    }
    Logger::getInstance()->countPacket(Logger::TCP_RECEIVED, bytes);
    receivedBytes += bytes;
    stream.feed(received.data(), bytes, onFrame);
    if (stream.isLost()) {
        end("sent bytes on TCP that are no message");
        return;
    }
    receive();
}

void ClientSession::write()
{
    inFlight.swap(queued);
    boost::asio::async_write(
        socket, boost::asio::buffer(inFlight),
        [self = shared_from_this()](const boost::system::error_code& error, std::size_t bytes) {
            self->inFlight.clear();
            // A failed write is left to the receive, which fails too.
            if (!error) {
                Logger::getInstance()->countPacket(Logger::TCP_SENT, bytes);
                self->flush();
            }
        });
}

/// The owner hears of the end later, from the executor: it may be in the middle of sending to everyone.
void ClientSession::end(const std::string& fault)
{
    ended = true;
    boost::asio::post(socket.get_executor(), [self = shared_from_this(), fault] {
        if (self->onEnd) {
            self->onEnd(fault);
        }
    });
    shutDown();
}

void ClientSession::shutDown()
{
    boost::system::error_code ignored;  // closing is all we can do
    socket.close(ignored);
}

}  // namespace practice
