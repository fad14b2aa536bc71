#pragma once

#include "tools/relay/FrontDoor.h"
#include "tools/relay/ReplaySession.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace relay {

/// Stands in for a recorded server: plays its side, from the start, to each client that connects.
///
/// Single-threaded: lives on the thread that runs the io_context, which must not run any more once the
/// replayer is destroyed.
class Replayer
{
public:
    using Log = std::function<void(const std::string& line)>;

    static constexpr std::size_t mostSessions = 32;

    /// Port 0: any free one. Throws boost::system::system_error where the port is taken.
    Replayer(boost::asio::io_context& io, std::uint16_t port, Script script, double speed, Log log);
    Replayer(const Replayer&) = delete;
    Replayer& operator=(const Replayer&) = delete;
    ~Replayer() { stop(); }

    std::uint16_t port() const { return door.port(); }

    void start();
    /// Hangs up on everyone and leaves the io_context without work of ours.
    void stop();

private:
    Script script;
    double speed;
    Log log;
    FrontDoor door;
    std::map<std::uint32_t, std::shared_ptr<ReplaySession>> sessions;  ///< by number
    std::map<FrontDoor::Endpoint, std::uint32_t> addresses;            ///< of the sessions that have one
    std::uint32_t sessionCount = 0;                                    ///< ever

    void handleConnection(boost::asio::ip::tcp::socket socket);
    void handleDatagram(const FrontDoor::Endpoint& sender, const std::string& datagram);
    void forget(std::uint32_t number);
};

}  // namespace relay
