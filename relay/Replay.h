#pragma once

#include "relay/Listener.h"
#include "relay/Recording.h"
#include "service/LogOnce.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace relay {

/// What a server sent to one client, and when.
struct ServerTrack
{
    struct Piece
    {
        Duration at;  ///< since the client's connection
        Transport transport;
        std::string bytes;
    };

    std::uint16_t qport;  ///< of the Welcome: the client's datagrams begin with it
    std::vector<Piece> pieces;
};

/// Reads the server's side of a recording towards one client. That is the first welcomed client that sent its
/// qport in a datagram. If none did, it is the first welcomed one. Throws std::runtime_error like
/// readRecording, and where no client is welcomed.
ServerTrack readServerTrack(const std::string& path, const Warn& warn);

/// Stands in for a recorded server: plays its side, from the start, to one client after the other.
///
/// A recording has one qport, which cannot tell two clients of one host apart. So a second client is rejected
/// while the first one plays. The client's first datagram tells its address. Until then the first recorded
/// datagram waits, with all that follows it. So every replay sends the same in the same order. A client that
/// reads too slowly loses datagrams, as with any server. Single-threaded, like its Listener.
class Replayer final : public Listener
{
public:
    /// Port 0: any free one. `speed`: 2 plays in half the time. `patience`: how long the first recorded
    /// datagram waits for the client's. Throws boost::system::system_error where the port is taken.
    Replayer(boost::asio::io_context& io, std::uint16_t port, ServerTrack track, double speed,
             LogOnce::Log log, std::chrono::seconds patience = std::chrono::seconds(20));
    ~Replayer() override { Replayer::stop(); }

    void stop() override;

private:
    class Session;

    ServerTrack track;
    double speed;
    std::chrono::seconds patience;
    LogOnce::Log log;
    LogOnce refused;
    std::shared_ptr<Session> session;  ///< the newest session, which may have ended
    std::uint32_t sessionCount = 0;    ///< since the start

    void handleConnection(TcpSocket socket) override;
    void handleDatagram(const Endpoint& client, const char* data, std::size_t size) override;
};

}  // namespace relay
