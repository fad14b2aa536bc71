#pragma once

#include "network/Messages.h"
#include "peer/Waiting.h"
#include "service/PortPair.h"

#include <atomic>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace peer {

/// A server's frame of whatever type and body; the length is right.
std::string rawFrame(unsigned char type, const std::string& body);

/// A client's datagram, taken apart.
struct SteeringDatagram : messages::Steering
{
    std::uint16_t qport = 0;
};

/// Nothing where the datagram is not exactly one frame that holds a ClientUpdate and no byte more.
std::optional<SteeringDatagram> parseSteering(const std::string& datagram);

/// A server for one client on 127.0.0.1, TCP and UDP on one port number, that says only what the test tells
/// it to, and writes down what the client sends.
///
/// A thread of its own receives; every operation may be called from any thread.
class ScriptedServer
{
public:
    struct Datagram
    {
        Clock::time_point arrival;
        std::string bytes;
    };
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
    /// The newest update, of which there must be one; throws where it is malformed.
    SteeringDatagram lastSteering() const { return parseSteering(record().datagrams.back().bytes).value(); }

    /// False where the client is gone.
    bool sendTcp(const std::string& bytes);
    /// To where the client's last datagram came from.
    void sendUdp(const std::string& bytes);
    void closeTcp();

    /// From the client's first datagram on, the state of an object that nobody knows keeps its watchdog
    /// quiet.
    std::atomic<bool> hasHeartbeat = true;

private:
    void work();
    void receive();

    boost::asio::io_context io;
    PortPair ports{io, 0};
    boost::asio::ip::tcp::socket tcp{io};
    boost::asio::ip::udp::endpoint client;  ///< port 0 until the first datagram
    Clock::time_point nextBeat;
    Record received;
    mutable std::mutex mutex;  ///< guards the fields from `io` to here
    std::atomic<bool> stopped = false;
    std::thread thread{[this] { work(); }};
};

}  // namespace peer
