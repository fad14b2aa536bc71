#pragma once

#include "tests/support/Messages.h"
#include "tests/support/Waiting.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ip/udp.hpp>
#include <boost/asio/steady_timer.hpp>

#include <array>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace support {

/// A server for one client on 127.0.0.1, TCP and UDP on one port number, that says only what the test tells
/// it to, and writes down what the client sends.
///
/// Sockets live on a thread of its own; every operation may be called from the test's thread. From the
/// client's first datagram on, a heartbeat (the state of an object that nobody knows) keeps the client's
/// watchdog quiet.
class ScriptedServer
{
public:
    struct Datagram
    {
        Clock::time_point arrival;
        std::string bytes;
    };

    ScriptedServer();
    ~ScriptedServer();

    std::string port() const;

    bool awaitConnection(Clock::duration timeout = 20s);
    /// Waits for the client's first datagram; from then on sendUdp has somewhere to go.
    bool awaitDatagram(Clock::duration timeout = 40s);
    /// Waits for an update like this among those that arrive from now on.
    bool awaitUpdate(const std::function<bool(const Steering&)>& wanted, Clock::duration timeout = 5s);

    void sendTcp(std::string bytes);
    void sendUdp(std::string bytes);
    /// Sends the same bytes over TCP again and again, as fast as the client takes them.
    void floodTcp(std::string bytes);
    void stopHeartbeat();
    void closeTcp();

    std::vector<Datagram> datagrams() const;
    /// The newest update; throws where there is none or where it is malformed.
    Steering lastSteering() const;
    bool wasConnected() const;
    std::size_t tcpBytesReceived() const;

private:
    void accept();
    void receiveTcp();
    void receiveUdp();
    void record(std::size_t size);
    void beat();
    void writeFlood();

    boost::asio::io_context io;
    boost::asio::ip::tcp::acceptor acceptor;
    boost::asio::ip::udp::socket udpSocket;
    boost::asio::ip::tcp::socket tcpSocket;
    boost::asio::steady_timer heartbeat;
    boost::asio::ip::udp::endpoint sender;  ///< of the datagram being received
    boost::asio::ip::udp::endpoint client;  ///< port 0 until the first datagram
    std::array<char, 4096> udpBuffer{};
    std::array<char, 4096> tcpBuffer{};
    std::string flood;
    bool beating = true;

    mutable std::mutex mutex;  ///< guards what follows
    std::vector<Datagram> received;
    std::size_t tcpBytes = 0;
    bool connected = false;

    std::thread thread;
};

}  // namespace support
