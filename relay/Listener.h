#pragma once

#include "service/LogOnce.h"
#include "service/PortPair.h"

#include <boost/asio/steady_timer.hpp>

#include <chrono>
#include <cstdint>
#include <utility>
#include <vector>

namespace relay {

/// Takes connections and datagrams of clients on one port number of 127.0.0.1.
///
/// Single-threaded, as its io_context, which must not run any more once this is destroyed.
class Listener
{
public:
    using TcpSocket = boost::asio::ip::tcp::socket;
    using Endpoint = boost::asio::ip::udp::endpoint;
    using Error = boost::system::error_code;

    static constexpr std::chrono::milliseconds acceptRetry{200};  ///< where descriptors are short

    /// Port 0: any free one. Throws boost::system::system_error where the port is taken. Logs once when no
    /// connection can be taken.
    Listener(boost::asio::io_context& io, std::uint16_t port, const LogOnce::Log& log)
        : ports(io, port), acceptTimer(io), shortage(log), received(65536)
    {
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    virtual ~Listener() = default;

    void start()
    {
        accept();
        receive();
    }

    /// Hangs up on everyone and leaves the io_context without work of ours, at the latest after acceptRetry.
    virtual void stop()
    {
        Error ignored;  // closing is all we can do
        ports.acceptor.close(ignored);
        ports.udp.close(ignored);
    }

    /// False if a part of what was asked for is missing.
    virtual bool isComplete() const { return true; }

    std::uint16_t port() const { return ports.number(); }

protected:
    virtual void handleConnection(TcpSocket socket) = 0;
    virtual void handleDatagram(const Endpoint& client, const char* data, std::size_t size) = 0;

    boost::asio::ip::udp::socket& udp() { return ports.udp; }

private:
    PortPair ports;
    boost::asio::steady_timer acceptTimer;
    LogOnce shortage;
    std::vector<char> received;
    Endpoint sender;

    bool isOpen() const { return ports.acceptor.is_open(); }

    void accept()
    {
        if (!isOpen()) {
            return;
        }
        ports.acceptor.async_accept([this](const Error& error, TcpSocket socket) {
            if (!isOpen()) {
                return;
            }
            if (error) {
                shortage.log("cannot take connections: " + error.message());
                acceptTimer.expires_after(acceptRetry);
                acceptTimer.async_wait([this](const Error&) { accept(); });
                return;
            }
            shortage.clear();
            handleConnection(std::move(socket));
            accept();
        });
    }

    void receive()
    {
        ports.udp.async_receive_from(boost::asio::buffer(received), sender,
                                     [this](const Error& error, std::size_t size) {
                                         if (!isOpen()) {
                                             return;
                                         }
                                         if (!error) {
                                             handleDatagram(sender, received.data(), size);
                                         }
                                         receive();
                                     });
    }
};

}  // namespace relay
