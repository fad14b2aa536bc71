#pragma once

#include "PracticeServer/ServerPorts.h"
#include "tests/support/Messages.h"
#include "tests/support/Waiting.h"

#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace support {

/// A server for one client on 127.0.0.1, TCP and UDP on one port number, that says only what the test tells
/// it to, and writes down what the client sends.
///
/// A thread of its own receives; every operation may be called from any thread. From the client's first
/// datagram on, a heartbeat (the state of an object that nobody knows) keeps the client's watchdog quiet.
class ScriptedServer
{
public:
    struct Datagram
    {
        Clock::time_point arrival;
        std::string bytes;
    };

    ScriptedServer() = default;
    ~ScriptedServer();

    std::string port() const { return std::to_string(ports.number()); }

    bool isConnected() const;
    /// Waits for an update like this among those that arrive from now on.
    bool awaitUpdate(const std::function<bool(const Steering&)>& wanted, Clock::duration timeout = 5s) const;

    /// False where the client is gone.
    bool sendTcp(const std::string& bytes);
    /// To where the client's last datagram came from.
    void sendUdp(const std::string& bytes);
    void stopHeartbeat();
    void closeTcp();

    std::vector<Datagram> datagrams() const;
    /// The newest update; throws where there is none or where it is malformed.
    Steering lastSteering() const;
    std::size_t tcpBytesReceived() const;

private:
    void work();
    void receive();

    boost::asio::io_context io;
    practice::ServerPorts ports{io, 0};
    boost::asio::ip::tcp::socket tcp{io};
    boost::asio::ip::udp::endpoint client;  ///< port 0 until the first datagram
    Clock::time_point nextBeat;
    bool beating = true;
    bool stopped = false;
    std::vector<Datagram> received;
    std::size_t tcpBytes = 0;
    mutable std::mutex mutex;  ///< guards everything above
    std::thread thread{[this] { work(); }};
};

}  // namespace support
