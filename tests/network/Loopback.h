#pragma once

#include <boost/asio/buffer.hpp>
#include <boost/asio/io_service.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ip/udp.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/write.hpp>

#include <chrono>
#include <cstdint>
#include <string>

namespace loopback {

using boost::asio::ip::tcp;
using boost::asio::ip::udp;

inline const boost::asio::ip::address_v4 address = boost::asio::ip::address_v4::loopback();

/// Both ends of one TCP connection on this machine.
struct Connection
{
    explicit Connection(boost::asio::io_service& service) : client(service), server(service)
    {
        tcp::acceptor acceptor(service, tcp::endpoint(address, 0));
        client.connect(acceptor.local_endpoint());
        acceptor.accept(server);
    }
    void write(const std::string& bytes) { boost::asio::write(server, boost::asio::buffer(bytes)); }

    tcp::socket client, server;
};

/// A game server's UDP socket.
struct Peer
{
    explicit Peer(boost::asio::io_service& service) : socket(service, udp::endpoint(address, 0)) {}
    void sendTo(const udp::socket& receiver, const std::string& datagram)
    {
        const udp::endpoint to(address, receiver.local_endpoint().port());
        socket.send_to(boost::asio::buffer(datagram), to);
    }
    std::string receive()
    {
        char datagram[2048];
        return {datagram, socket.receive(boost::asio::buffer(datagram))};
    }

    udp::socket socket;
};

/// Runs handlers, on this thread, until `condition` holds (true) or two seconds are over (false).
template <class Condition>
bool runUntil(boost::asio::io_service& service, Condition condition)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        service.restart();
        service.run_for(std::chrono::milliseconds(5));
    }
    return true;
}

}  // namespace loopback
