#pragma once

#include "relay/StreamPipe.h"

#include <functional>
#include <memory>
#include <string>

namespace relay {

/// One client's TCP connection, and ours to the server on its behalf.
///
/// Lives on the single-threaded executor of the client's socket. A connection that breaks on one side is
/// reset on the other once the system has taken what the broken side said last. Of that a slow reader loses
/// what the system still holds.
class TcpLink : public std::enable_shared_from_this<TcpLink>
{
public:
    /// `reason`: why the connection is over, for the log.
    using End = std::function<void(const std::string& reason)>;

    /// The config outlives the link. `number`: from 1.
    TcpLink(boost::asio::ip::tcp::socket client, std::uint32_t number, const RelayConfig& config);

    /// Connects to the server; the end is announced once, from the executor.
    void start(const boost::asio::ip::tcp::endpoint& server, End onEnd);
    /// Hangs up on both sides and calls nobody any more; not to be called from within the callback.
    void close();

private:
    StreamPipe::Socket client, server;
    std::uint32_t number;
    const RelayConfig& config;
    boost::asio::steady_timer cutTimer;
    std::shared_ptr<StreamPipe> up, down;
    End onEnd;
    int openDirections = 2;
    bool isBroken = false;
    bool ended = false;

    void handleConnect(const boost::system::error_code& error);
    void startPipe(const std::shared_ptr<StreamPipe>& pipe);
    void directionEnded(StreamPipe::Cause cause);
    void scheduleCut();
    void end(const std::string& reason, bool reset = false);
};

}  // namespace relay
