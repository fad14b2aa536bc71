#pragma once

#include "relay/DelayQueue.h"
#include "relay/RelayConfig.h"
#include "service/LogOnce.h"

#include <boost/asio/ip/udp.hpp>
#include <boost/asio/steady_timer.hpp>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace relay {

/// The datagrams between one client address and the server.
///
/// The server sees a socket of the flow's own, so it tells clients apart by address as ever. Answers leave
/// from the socket that the client sent to. Lives on that socket's single-threaded executor.
class UdpFlow : public std::enable_shared_from_this<UdpFlow>
{
public:
    using Endpoint = boost::asio::ip::udp::endpoint;

    /// `listening` and the config outlive the flow. Throws boost::system::system_error without a socket.
    UdpFlow(boost::asio::ip::udp::socket& listening, const Endpoint& client, const Endpoint& server,
            std::uint32_t number, const RelayConfig& config);

    /// Starts to take what the server says.
    void start() { receive(); }
    void fromClient(const char* data, std::size_t size);
    Time lastHeard() const { return heardAt; }
    /// Passes nothing any more.
    void close();

private:
    /// What is under way in one direction.
    struct Way
    {
        Flow flow;
        DelayQueue line;
        LogOnce overfull;
    };

    boost::asio::ip::udp::socket& listening;
    boost::asio::ip::udp::socket upstream;
    Endpoint client;
    const RelayConfig& config;
    Way up, down;
    LogOnce trouble;  ///< with hearing from the server
    boost::asio::steady_timer timer;
    Time heardAt = Clock::now();
    Time cutAt = Time::max();
    bool closed = false;
    std::vector<char> received;

    void receive();
    void handleReceive(const boost::system::error_code& error, std::size_t bytes);
    void say(LogOnce& complaint, const std::string& what);
    void take(Way& way, const char* data, std::size_t size);
    void deliver();
    void schedule();
};

}  // namespace relay
