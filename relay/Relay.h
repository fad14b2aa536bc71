#pragma once

#include "relay/Listener.h"
#include "relay/RelayConfig.h"
#include "service/LogOnce.h"

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

namespace relay {

class TcpLink;
class UdpFlow;

/// Stands between clients and a server: listens on 127.0.0.1 as the server would, and passes on what both
/// sides send, spoilt as the config asks.
///
/// Single-threaded, like its Listener. Memory is bounded: the numbers of connections and flows, and the bytes
/// in each.
class Relay final : public Listener
{
public:
    static constexpr std::size_t mostLinks = 64;
    static constexpr std::size_t mostFlows = 64;
    /// Where there are too many flows, those of clients silent for so long give way. Players send 20 times a
    /// second.
    static constexpr Duration idleLimit = std::chrono::seconds(2);

    /// Finds the server's address, opens the ports, then the recording. Throws std::runtime_error, perhaps a
    /// boost::system::system_error, where that fails or the server would be the relay itself.
    Relay(boost::asio::io_context& io, const RelayConfig& config);
    ~Relay() override { Relay::stop(); }

    void stop() override;
    bool isComplete() const override { return config.recording == nullptr || !config.recording->hasFailed(); }

private:
    RelayConfig config;
    boost::asio::ip::tcp::endpoint server;
    std::vector<std::shared_ptr<TcpLink>> links;  ///< ended ones go when the next one comes
    std::map<Endpoint, std::shared_ptr<UdpFlow>> flows;
    std::uint32_t linkCount = 0;  ///< ever
    std::uint32_t flowCount = 0;  ///< ever
    LogOnce linksRefused, flowsRefused;

    void handleConnection(TcpSocket socket) override;
    void handleDatagram(const Endpoint& client, const char* data, std::size_t size) override;
    std::shared_ptr<UdpFlow> flowOf(const Endpoint& client);
    void dropIdleFlows();
};

}  // namespace relay
