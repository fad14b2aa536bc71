#pragma once

#include "service/LogOnce.h"
#include "service/PortPair.h"

#include <boost/asio/steady_timer.hpp>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace relay {

/// Where clients come in: takes connections and datagrams on one port number of 127.0.0.1.
///
/// Single-threaded, as its io_context, which must not run any more once this is destroyed.
class Listener
{
public:
    using Endpoint = boost::asio::ip::udp::endpoint;
    using OnConnection = std::function<void(boost::asio::ip::tcp::socket)>;
    using OnDatagram = std::function<void(const Endpoint& sender, const char* data, std::size_t size)>;

    /// Port 0: any free one. Throws boost::system::system_error where the port is taken. The log hears when
    /// no connection can be taken, once until one can again.
    Listener(boost::asio::io_context& io, std::uint16_t port, LogOnce::Log log);

    void open(OnConnection onConnection, OnDatagram onDatagram);
    /// Calls nobody any more.
    void close();

    std::uint16_t port() const { return portNumber; }
    boost::asio::ip::udp::socket& udp() { return ports.udp; }

private:
    PortPair ports;
    std::uint16_t portNumber;
    boost::asio::steady_timer acceptPause;
    OnConnection onConnection;
    OnDatagram onDatagram;
    LogOnce shortage;
    std::vector<char> received;
    Endpoint sender;
    bool closed = false;

    void accept();
    void pauseAccepting(const boost::system::error_code& error);
    void receive();
};

}  // namespace relay
