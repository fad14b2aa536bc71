#include "service/PortPair.h"

#include <boost/system/system_error.hpp>

#include <string>

namespace {

using boost::asio::ip::tcp;
using boost::asio::ip::udp;

constexpr int attempts = 16;  ///< someone else may hold the UDP port of the TCP port we were given

boost::system::system_error cannotServe(const boost::system::error_code& error, const std::string& transport,
                                        const boost::asio::ip::address& address, std::uint16_t port)
{
    return {error, "cannot serve on " + transport + " " + address.to_string() + ":" + std::to_string(port)};
}

tcp::acceptor listenOn(boost::asio::io_context& io, const tcp::endpoint& endpoint)
{
    try {
        return {io, endpoint};
    } catch (const boost::system::system_error& error) {
        throw cannotServe(error.code(), "TCP", endpoint.address(), endpoint.port());
    }
}

boost::system::error_code bindUdp(udp::socket& socket, const udp::endpoint& endpoint)
{
    boost::system::error_code error;
    socket.open(udp::v4());
    socket.bind(endpoint, error);
    if (error) {
        socket.close();
    }
    return error;
}

}  // namespace

PortPair::PortPair(boost::asio::io_context& io, std::uint16_t port,
                   const boost::asio::ip::address_v4& address)
    : acceptor(io), udp(io)
{
    boost::system::error_code error;
    for (int attempt = 0; attempt < (port == 0 ? attempts : 1); ++attempt) {
        acceptor = listenOn(io, {address, port});
        error = bindUdp(udp, {address, number()});
        if (!error) {
            udp.non_blocking(true);
            return;
        }
    }
    throw cannotServe(error, "UDP", address, number());
}
