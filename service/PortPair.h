#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/address_v4.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ip/udp.hpp>

#include <cstdint>

/// The two sockets that a client expects of a server, open on the same port number of one address.
struct PortPair
{
    boost::asio::ip::tcp::acceptor acceptor;
    boost::asio::ip::udp::socket udp;  ///< non-blocking

    /// Port 0 takes any number that is free for both. Throws boost::system::system_error if no port is free
    /// or the given one is taken. It also throws if the address is not one of this machine.
    PortPair(boost::asio::io_context& io, std::uint16_t port,
             const boost::asio::ip::address_v4& address = boost::asio::ip::address_v4::loopback());

    std::uint16_t number() const { return acceptor.local_endpoint().port(); }
};
