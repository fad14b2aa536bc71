#pragma once

#include "relay/Listener.h"
#include "relay/TcpLink.h"
#include "relay/UdpFlow.h"
#include "service/LogOnce.h"

#include <cstdint>
#include <map>
#include <memory>

namespace relay {

/// Stands between clients and a server: listens on 127.0.0.1 as the server would, and passes on what both
/// sides say, spoilt as the config asks.
///
/// Single-threaded: lives on the thread that runs the io_context, which must not run any more once the relay
/// is destroyed. Memory is bounded: so many connections, so many flows, so many bytes in each.
class Relay
{
public:
    static constexpr std::size_t mostLinks = 64;
    static constexpr std::size_t mostFlows = 64;
    /// Where there are too many, flows of clients that have been silent for so long give way: players say
    /// something 20 times a second.
    static constexpr Duration idleLimit = std::chrono::seconds(2);

    /// Finds the server's address and opens the ports. Throws std::runtime_error, perhaps a
    /// boost::system::system_error, where that fails or the server would be the relay itself.
    Relay(boost::asio::io_context& io, const RelayConfig& config);
    Relay(const Relay&) = delete;
    Relay& operator=(const Relay&) = delete;
    ~Relay() { stop(); }

    std::uint16_t port() const { return door.port(); }

    /// From the start on; the recording outlives the relay.
    void recordInto(RecordingWriter& recording) { config.recording = &recording; }

    void start();
    /// Hangs up on everyone and leaves the io_context without work of ours.
    void stop();

private:
    RelayConfig config;
    boost::asio::ip::tcp::endpoint server;
    Listener door;
    std::map<std::uint32_t, std::shared_ptr<TcpLink>> links;  ///< by number
    std::map<UdpFlow::Endpoint, std::shared_ptr<UdpFlow>> flows;
    std::uint32_t linkCount = 0;  ///< ever
    std::uint32_t flowCount = 0;  ///< ever
    LogOnce linksRefused{config.log};
    LogOnce flowsRefused{config.log};

    void handleConnection(boost::asio::ip::tcp::socket socket);
    void addLink(boost::asio::ip::tcp::socket socket);
    std::shared_ptr<UdpFlow> flowOf(const UdpFlow::Endpoint& client);
    std::shared_ptr<UdpFlow> addFlow(const UdpFlow::Endpoint& client);
    void dropIdleFlows();
};

}  // namespace relay
