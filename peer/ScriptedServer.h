#pragma once

#include "network/Messages.h"
#include "peer/Endpoints.h"
#include "service/PortPair.h"

#include <atomic>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace peer {

/// A server's frame of any type and body. The length field is right.
std::string rawFrame(unsigned char type, const std::string& body);

/// What a client's datagram says.
struct SteeringDatagram : messages::Steering
{
    std::uint16_t qport = 0;
};

/// Nothing unless the datagram is exactly one frame of a ClientUpdate.
std::optional<SteeringDatagram> parseSteering(const std::string& datagram);

/// A server for one client on 127.0.0.1, TCP and UDP on one port number. It sends only what the test tells it
/// to, and records what the client sends.
///
/// A thread of its own receives. Every function may be called from any thread.
class ScriptedServer
{
public:
    struct Record
    {
        bool connected = false;
        std::size_t tcpBytes = 0;
        std::vector<Datagram> datagrams;
    };

    ScriptedServer() = default;
    ~ScriptedServer();

    std::string port() const { return std::to_string(ports.number()); }

    /// What the client has done so far.
    Record record() const;
    /// Of the newest datagram, of which there must be one; throws where it is malformed.
    SteeringDatagram lastSteering() const;

    /// Waits until the client's system has taken all. False if there is no client any more.
    bool sendTcp(const std::string& bytes);
    /// To the sender of the newest datagram.
    void sendUdp(const std::string& bytes);
    /// With a reset instead of an end, if wanted.
    void closeTcp(bool resets = false);

    /// Sends an update of an unknown object ten times a second, from the client's first datagram on. So the
    /// client's watchdog does not end it.
    std::atomic<bool> hasHeartbeat = true;

private:
    void run();

    boost::asio::io_context io;
    PortPair ports{io, 0};
    DatagramEnd datagrams{std::move(ports.udp)};
    std::optional<StreamEnd> stream;
    mutable std::mutex mutex;  ///< guards the fields from `io` to here
    std::atomic<bool> stopped = false;
    std::thread thread{[this] { run(); }};
};

}  // namespace peer
