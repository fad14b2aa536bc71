#pragma once

#include "network/Messages.h"
#include "peer/ProtocolChecker.h"

#include <string>

namespace peer {

/// A client without a window, for a server on 127.0.0.1: connects, decodes and checks all that comes, and
/// sends what it is told to.
///
/// Nothing blocks: `poll` receives what has arrived. Not thread-safe.
class HeadlessClient
{
public:
    using History = ProtocolChecker::History;

    /// Connects at once; throws boost::system::system_error where that fails.
    HeadlessClient(boost::asio::io_context& io, std::uint16_t serverPort, History history = History::all);

    StreamEnd stream;
    DatagramEnd datagrams;  ///< without a history each datagram goes after its check
    ProtocolChecker checker;
    const std::string address;  ///< its end of the stream, as "127.0.0.1:40000"

    void poll();
    /// Sends a datagram with the qport of the welcome, or 0 before it.
    void steer(const messages::Steering& steering);
    void sendDatagram(const std::string& bytes) { datagrams.send(bytes, server); }
    void sendStream(const std::string& bytes) { stream.send(bytes); }
    void hangUp() { stream.close(); }
    void reset() { stream.reset(); }

    std::uint64_t id() const { return checker.welcome.id(); }
    std::uint16_t qport() const { return static_cast<std::uint16_t>(checker.welcome.qport()); }
    /// Of the own ship; throws std::out_of_range where there is none.
    Vector3 position() const { return checker.positions.at(id()); }
    bool serverHungUp() const { return stream.end.failed(); }
    bool hasLost(std::uint64_t ship) const;

private:
    DatagramEnd::Address server;
    History history;
    std::size_t checked = 0;  ///< of the received datagrams
};

}  // namespace peer
