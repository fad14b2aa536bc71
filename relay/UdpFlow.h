#pragma once

#include "relay/Connection.h"
#include "relay/RelayConfig.h"

#include <boost/asio/ip/udp.hpp>
#include <boost/asio/steady_timer.hpp>

#include <algorithm>
#include <string>
#include <vector>

namespace relay {

/// The datagrams between one client address and the server.
///
/// The flow has a socket of its own towards the server, so the server still tells clients apart by address.
/// Answers leave from the socket that the client sent to. Lives on that socket's single-threaded executor.
class UdpFlow final : public Connection
{
public:
    using Socket = boost::asio::ip::udp::socket;
    using Endpoint = boost::asio::ip::udp::endpoint;
    using Error = boost::system::error_code;

    /// `listening` and the config outlive the flow. Throws boost::system::system_error without a socket.
    UdpFlow(Socket& listening_, const Endpoint& client_, const Endpoint& server, std::uint32_t number,
            const RelayConfig& config_)
        : Connection("datagrams " + std::to_string(number), config_.log),
          listening(listening_),
          upstream(listening_.get_executor()),
          client(client_),
          config(config_),
          up({Transport::datagrams, number, Direction::toServer}, config_),
          down({Transport::datagrams, number, Direction::toClient}, config_),
          receiveError(config_.log),
          timer(listening_.get_executor()),
          cutTime(config_.cutTime()),
          received(largestChunk)
    {
        upstream.connect(server);
        upstream.non_blocking(true);
        config.record(up.flow, Chunk::OPENED);
    }

    /// Receives from the server. Errors do not end the flow: a stopped server refuses datagrams until it is
    /// back.
    void receive()
    {
        upstream.async_receive(boost::asio::buffer(received),
                               whileOpen([this](const Error& error, std::size_t bytes) {
                                   if (!error) {
                                       receiveError.clear();
                                       push(down, received.data(), bytes);
                                   } else if (error != boost::asio::error::connection_refused) {
                                       receiveError.log(name + ": " + error.message());
                                   }
                                   if (isOpen()) {
                                       receive();
                                   }
                               }));
    }

    void handleClientDatagram(const char* data, std::size_t size)
    {
        lastReceived = Clock::now();
        if (isOpen()) {
            push(up, data, size);
        }
    }

    /// Whether the client has sent nothing during the last `limit`.
    bool isIdleFor(Duration limit) const { return lastReceived < Clock::now() - limit; }

private:
    /// What is under way in one direction.
    struct Pipe
    {
        Pipe(const Flow& flow_, const RelayConfig& config)
            : flow(flow_), queue(Impairment(config.conditions, config.seed, flow_)), overflow(config.log)
        {
        }

        Flow flow;
        DelayQueue queue;
        LogOnce overflow;
    };

    Socket& listening;
    Socket upstream;
    Endpoint client;
    const RelayConfig& config;
    Pipe up, down;
    LogOnce receiveError;
    boost::asio::steady_timer timer;
    Time lastReceived = Clock::now();
    Time cutTime;
    std::vector<char> received;

    void push(Pipe& pipe, const char* data, std::size_t size)
    {
        const Time now = Clock::now();
        if (now >= cutTime) {
            end("cut");
            return;
        }
        config.record(pipe.flow, Chunk::BYTES, data, size);
        if (pipe.queue.push(now, std::string(data, size))) {
            pipe.overflow.clear();
        } else {
            pipe.overflow.log(name + ": too many are under way, some are lost");
        }
        deliver();
    }

    void hangUp() override
    {
        Error ignored;  // closing is all we can do
        timer.cancel(ignored);
        upstream.close(ignored);
    }

    /// Datagrams that a socket does not take at once are lost, as on any full link.
    void deliver()
    {
        Error ignored;
        while (const auto datagram = up.queue.pop(Clock::now())) {
            upstream.send(boost::asio::buffer(*datagram), 0, ignored);
        }
        while (const auto datagram = down.queue.pop(Clock::now())) {
            listening.send_to(boost::asio::buffer(*datagram), client, 0, ignored);
        }
        timer.expires_at(std::min(up.queue.nextDue(), down.queue.nextDue()));
        timer.async_wait(whileOpen([this](const Error& cancelled) {
            if (!cancelled) {
                deliver();
            }
        }));
    }
};

}  // namespace relay
