#include "relay/StreamPipe.h"

#include <boost/asio/write.hpp>

#include <algorithm>
#include <utility>

namespace relay {

using boost::system::error_code;

StreamPipe::StreamPipe(Socket from_, Socket to_, const Flow& lane_, const RelayConfig& config_)
    : from(std::move(from_)),
      to(std::move(to_)),
      flow(lane_),
      config(config_),
      impairment(config_.conditions, config_.seed, lane_),
      timer(to->get_executor())
{
}

void StreamPipe::start(End onEnd_)
{
    onEnd = std::move(onEnd_);
    read();
}

void StreamPipe::close()
{
    closed = true;
    error_code ignored;
    timer.cancel(ignored);
}

void StreamPipe::read()
{
    isReading = true;
    from->async_receive(boost::asio::buffer(received),
                        [self = shared_from_this()](const error_code& error, std::size_t bytes) {
                            if (!self->closed) {
                                self->handleRead(error, bytes);
                            }
                        });
}

void StreamPipe::handleRead(const error_code& error, std::size_t bytes)
{
    isReading = false;
    if (error) {
        config.record(flow, Chunk::Kind::closed);
        isBroken = error != boost::asio::error::eof;
        push({});
        return;
    }
    config.record(flow, Chunk::Kind::bytes, received.data(), bytes);
    push(std::string(received.data(), bytes));
    if (waitingBytes < byteLimit) {
        read();
    }
}

void StreamPipe::push(std::string bytes)
{
    lastDue = std::max(lastDue, Clock::now() + impairment.next().delay);
    waitingBytes += bytes.size();
    waiting.push_back({lastDue, std::move(bytes)});
    if (waiting.size() == 1) {
        awaitFirst();
    }
}

void StreamPipe::awaitFirst()
{
    timer.expires_at(waiting.front().due);
    timer.async_wait([self = shared_from_this()](const error_code& cancelled) {
        if (!self->closed && !cancelled) {
            self->deliverFirst();
        }
    });
}

void StreamPipe::deliverFirst()
{
    const std::string& bytes = waiting.front().bytes;
    if (bytes.empty()) {
        finish();
        return;
    }
    boost::asio::async_write(*to, boost::asio::buffer(bytes),
                             [self = shared_from_this()](const error_code& error, std::size_t) {
                                 if (!self->closed) {
                                     self->handleWritten(error);
                                 }
                             });
}

void StreamPipe::handleWritten(const error_code& error)
{
    if (error) {
        close();
        onEnd(Cause::brokenTarget);
        return;
    }
    const bool wasFull = waitingBytes >= byteLimit;
    waitingBytes -= waiting.front().bytes.size();
    waiting.pop_front();
    const bool mayRead = wasFull && !isReading && waitingBytes < byteLimit;
    if (!waiting.empty()) {
        awaitFirst();
    }
    if (mayRead) {
        read();
    }
}

void StreamPipe::finish()
{
    if (!isBroken) {
        error_code ignored;  // a socket that is gone already needs no end of file
        to->shutdown(boost::asio::ip::tcp::socket::shutdown_send, ignored);
    }
    onEnd(isBroken ? Cause::brokenSource : Cause::endOfFile);
}

}  // namespace relay
