#pragma once

#include "network/Messages.h"
#include "peer/ProtocolChecker.h"

#include <algorithm>
#include <string>
#include <utility>

namespace peer {

/// A client without a window, for a server on 127.0.0.1. It connects, decodes and checks everything that its
/// server sends. Its owner decides what it sends.
///
/// Nothing blocks: `poll` receives what has arrived. Not thread-safe.
class HeadlessClient
{
public:
    /// Connects at once; throws boost::system::system_error where that fails.
    HeadlessClient(boost::asio::io_context& io, std::uint16_t serverPort)
        : stream(connectTo(io, serverPort)),
          datagrams(boost::asio::ip::udp::socket(io, loopback(0))),
          server(loopback(serverPort))
    {
        boost::system::error_code ignored;  // a smaller buffer only loses more
        datagrams.socket.set_option(boost::asio::socket_base::receive_buffer_size(1 << 20), ignored);
    }

    StreamEnd stream;
    DatagramEnd datagrams;
    ProtocolChecker checker;
    /// Its own end of the stream, as "127.0.0.1:40000".
    const std::string address = "127.0.0.1:" + std::to_string(stream.socket.local_endpoint().port());

    void poll()
    {
        const bool wasOpen = !stream.end;
        datagrams.poll();
        stream.poll();
        for (const Datagram& datagram : std::exchange(datagrams.received, {})) {
            if (wasOpen && datagram.sender == server) {  // others may send to the former owner of the port
                checker.receiveDatagram(datagram);
            }
        }
        checker.receiveStream(stream.received);
    }
    /// With the qport of the welcome, or 0 before it.
    void steer(const messages::Steering& steering)
    {
        sendDatagram(messages::steeringFrame(qport(), steering));
    }
    void sendDatagram(const std::string& bytes) { datagrams.send(bytes, server); }

    std::uint64_t id() const { return checker.welcome.id(); }
    std::uint16_t qport() const { return static_cast<std::uint16_t>(checker.welcome.qport()); }
    /// Of the own ship; throws std::out_of_range where there is none.
    Vector3 position() const { return checker.positions.at(id()); }
    bool serverHungUp() const { return stream.end.failed(); }
    bool hasLost(std::uint64_t object) const
    {
        const auto& destroyed = checker.received.destroyed;
        return std::find(destroyed.begin(), destroyed.end(), object) != destroyed.end();
    }

private:
    DatagramEnd::Address server;
};

}  // namespace peer
