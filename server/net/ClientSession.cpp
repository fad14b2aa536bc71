#include "server/net/ClientSession.h"

#include "instrumentation/Logger.h"

#include <boost/asio/write.hpp>

namespace practice {

ClientSession::ClientSession(boost::asio::ip::tcp::socket socket_, std::size_t queueLimit_)
    : socket(std::move(socket_)), queueLimit(queueLimit_)
{
    boost::system::error_code ignored;  // if the peer has left, the first receive fails
    remote = socket.remote_endpoint(ignored);
    socket.set_option(boost::asio::ip::tcp::no_delay(true), ignored);
    // By default the system's own queue for a client that does not read would grow to megabytes.
    socket.set_option(boost::asio::socket_base::send_buffer_size(static_cast<int>(queueLimit / 2)), ignored);
}

void ClientSession::start(FrameHandler onFrame_)
{
    onFrame = std::move(onFrame_);
    receive();
}

void ClientSession::send(const std::string& frame)
{
    if (current != State::open) {
        return;
    }
    const std::size_t waiting = queued.size() + inFlight.size();
    if (waiting + frame.size() > queueLimit) {
        end(State::cutOff, "does not read what it is sent, " + std::to_string(waiting) + " bytes wait");
        return;
    }
    queued += frame;
}

void ClientSession::flush()
{
    if (current != State::open || !inFlight.empty() || queued.empty()) {
        return;
    }
    inFlight.swap(queued);
    boost::asio::async_write(
        socket, boost::asio::buffer(inFlight),
        [self = shared_from_this()](const boost::system::error_code& error, std::size_t bytes) {
            self->inFlight.clear();
            if (!error) {
                Logger::getInstance()->countPacket(Logger::TCP_SENT, bytes);
                self->flush();
            } else if (self->current == State::open) {
                self->end(State::hungUp, "");  // bytes are missing: a later frame would be garbled
            }
        });
}

void ClientSession::receive()
{
    socket.async_receive(
        boost::asio::buffer(buffer),
        [self = shared_from_this()](const boost::system::error_code& error, std::size_t bytes) {
            self->handleReceive(error, bytes);
        });
}

void ClientSession::handleReceive(const boost::system::error_code& error, std::size_t bytes)
{
    if (current != State::open) {
        return;
    }
    if (error) {
        end(State::hungUp, "");
        return;
    }
    Logger::getInstance()->countPacket(Logger::TCP_RECEIVED, bytes);
    receivedBytes += bytes;
    stream.append(buffer.data(), bytes);
    std::size_t used = 0;
    framing::ClientFrame frame;
    framing::Cut cut = framing::Cut::frame;
    while ((cut = framing::cutClientFrame(stream.data() + used, stream.size() - used, frame)) ==
           framing::Cut::frame) {
        onFrame(frame);
        used += frame.size();
    }
    stream.erase(0, used);
    if (cut == framing::Cut::broken) {
        end(State::cutOff, "sent bytes on TCP that are no message");
        return;
    }
    receive();
}

void ClientSession::end(State state, const std::string& reason_)
{
    current = state;
    reason = reason_;
    boost::system::error_code ignored;  // closing is all we can do
    socket.close(ignored);
}

}  // namespace practice
