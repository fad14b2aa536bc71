#pragma once

#include "relay/Listener.h"
#include "relay/ReplaySession.h"
#include "service/LogOnce.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace relay {

/// Stands in for a recorded server: plays its side, from the start, to one client after the other.
///
/// A recording has one qport, by which no two clients of one host could be told apart: whoever comes while
/// another one watches is turned away.
///
/// Single-threaded: lives on the thread that runs the io_context, which must not run any more once the
/// replayer is destroyed.
class Replayer
{
public:
    using Log = std::function<void(const std::string& line)>;

    /// Port 0: any free one. Throws boost::system::system_error where the port is taken.
    Replayer(boost::asio::io_context& io, std::uint16_t port, ServerTrack script, double speed, Log log);
    Replayer(const Replayer&) = delete;
    Replayer& operator=(const Replayer&) = delete;
    ~Replayer() { stop(); }

    std::uint16_t port() const { return door.port(); }

    void start();
    /// Hangs up and leaves the io_context without work of ours.
    void stop();

private:
    ServerTrack script;
    double speed;
    Log log;
    Listener door;
    LogOnce refused;
    std::shared_ptr<ReplaySession> session;  ///< the last one, which may have ended
    std::uint32_t sessionCount = 0;          ///< ever

    void handleConnection(boost::asio::ip::tcp::socket socket);
};

}  // namespace relay
