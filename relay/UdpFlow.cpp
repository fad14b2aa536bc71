#include "relay/UdpFlow.h"

#include <algorithm>
#include <optional>

namespace relay {

using boost::asio::ip::udp;
using boost::system::error_code;

UdpFlow::UdpFlow(udp::socket& listening_, const Endpoint& client_, const Endpoint& server,
                 std::uint32_t number, const RelayConfig& config_)
    : listening(listening_),
      upstream(listening_.get_executor()),
      client(client_),
      config(config_),
      up{{Transport::datagrams, number, Direction::toServer},
         DelayQueue(Impairment(config_.conditions, config_.seed,
                               {Transport::datagrams, number, Direction::toServer})),
         LogOnce(config_.log)},
      down{{Transport::datagrams, number, Direction::toClient},
           DelayQueue(Impairment(config_.conditions, config_.seed,
                                 {Transport::datagrams, number, Direction::toClient})),
           LogOnce(config_.log)},
      trouble(config_.log),
      timer(listening_.get_executor()),
      received(largestChunk)
{
    upstream.connect(server);
    upstream.non_blocking(true);
    config.record(up.flow, Chunk::Kind::opened);
    if (config.cutAfter) {
        cutAt = heardAt + *config.cutAfter;
    }
}

void UdpFlow::fromClient(const char* data, std::size_t size)
{
    heardAt = Clock::now();
    if (!closed) {
        take(up, data, size);
    }
}

void UdpFlow::close()
{
    closed = true;
    error_code ignored;  // closing is all we can do
    timer.cancel(ignored);
    upstream.close(ignored);
}

void UdpFlow::receive()
{
    upstream.async_receive(boost::asio::buffer(received),
                           [self = shared_from_this()](const error_code& error, std::size_t bytes) {
                               if (!self->closed) {
                                   self->handleReceive(error, bytes);
                               }
                           });
}

/// No error is the end: a server that is not there refuses each datagram, and may come back; a way that is
/// gone, too.
void UdpFlow::handleReceive(const error_code& error, std::size_t bytes)
{
    if (!error) {
        trouble.clear();
        take(down, received.data(), bytes);
    } else if (error != boost::asio::error::connection_refused) {
        say(trouble, error.message());
    }
    if (!closed) {
        receive();
    }
}

void UdpFlow::say(LogOnce& complaint, const std::string& what)
{
    complaint.log("datagrams " + std::to_string(up.flow.number) + ": " + what);
}

void UdpFlow::take(Way& way, const char* data, std::size_t size)
{
    if (Clock::now() >= cutAt) {
        config.log("datagrams " + std::to_string(way.flow.number) + ": cut");
        close();
        return;
    }
    config.record(way.flow, Chunk::Kind::bytes, data, size);
    if (way.line.push(Clock::now(), std::string(data, size))) {
        way.overfull.clear();
    } else {
        say(way.overfull, "too many are under way, some are lost");
    }
    deliver();
}

/// What a socket does not take at once is lost, as on any full link.
void UdpFlow::deliver()
{
    error_code ignored;
    while (const std::optional<std::string> datagram = up.line.pop(Clock::now())) {
        upstream.send(boost::asio::buffer(*datagram), 0, ignored);
    }
    while (const std::optional<std::string> datagram = down.line.pop(Clock::now())) {
        listening.send_to(boost::asio::buffer(*datagram), client, 0, ignored);
    }
    schedule();
}

void UdpFlow::schedule()
{
    const std::optional<Time> next[] = {up.line.nextDue(), down.line.nextDue()};
    if (!next[0] && !next[1]) {
        return;
    }
    timer.expires_at(std::min(next[0].value_or(Time::max()), next[1].value_or(Time::max())));
    timer.async_wait([self = shared_from_this()](const error_code& cancelled) {
        if (!self->closed && !cancelled) {
            self->deliver();
        }
    });
}

}  // namespace relay
