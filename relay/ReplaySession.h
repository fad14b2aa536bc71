#pragma once

#include "relay/ServerTrack.h"

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ip/udp.hpp>
#include <boost/asio/steady_timer.hpp>

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace relay {

/// Plays a script to one client, then hangs up.
///
/// What the server said in datagrams waits, and all that follows it, until the client's own first datagram
/// tells its address: so every replay says the same in the same order. A client that falls far behind with
/// reading loses datagrams, as with any server.
/// Lives on its sockets' single-threaded executor.
class ReplaySession : public std::enable_shared_from_this<ReplaySession>
{
public:
    using Endpoint = boost::asio::ip::udp::endpoint;
    /// `reason`: for the log.
    using End = std::function<void(const std::string& reason)>;

    /// `udp` and the script outlive the session. `speed`: 2 plays in half the time.
    ReplaySession(boost::asio::ip::tcp::socket client, boost::asio::ip::udp::socket& udp,
                  const ServerTrack& script, double speed);

    /// The end is announced once, from the executor.
    void start(End onEnd);
    /// Hangs up and calls nobody any more; not to be called from within the callback.
    void close();
    bool hasEnded() const { return ended; }
    /// The first datagram from the client's host with its qport tells its address; all others tell nothing.
    void takeAddress(const Endpoint& sender, const std::string& datagram);

private:
    boost::asio::ip::tcp::socket client;
    boost::asio::ip::tcp::endpoint peer;
    boost::asio::ip::udp::socket& udp;
    const ServerTrack& script;
    double speed;
    boost::asio::steady_timer timer;
    End onEnd;
    std::optional<Endpoint> address;
    std::size_t next = 0;              ///< line of the script
    Time began = Clock::now();         ///< plus the time for which the script had to wait
    std::optional<Time> waitingSince;  ///< for the address
    std::array<char, 2048> received{};
    bool ended = false;

    void receive();
    void awaitLine();
    void say();
    void lineSaid(const boost::system::error_code& error);
    void end(const std::string& reason);
};

}  // namespace relay
