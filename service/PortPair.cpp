#include "service/PortPair.h"

#include <boost/system/system_error.hpp>

#include <string>

namespace {

using boost::system::error_code;

constexpr int attempts = 16;  ///< another program may hold the UDP port of the TCP port we were given

boost::system::system_error cannotServe(const error_code& error, const std::string& transport,
                                        const boost::asio::ip::address_v4& address, std::uint16_t port)
{
    return {error, "cannot serve on " + transport + " " + address.to_string() + ":" + std::to_string(port)};
}

}  // namespace

PortPair::PortPair(boost::asio::io_context& io, std::uint16_t port,
                   const boost::asio::ip::address_v4& address)
    : acceptor(io), udp(io)
{
    error_code error;
    for (int attempt = 0; attempt < (port == 0 ? attempts : 1); ++attempt) {
        try {
            acceptor = {io, {address, port}};
        } catch (const boost::system::system_error& failure) {
            throw cannotServe(failure.code(), "TCP", address, port);
        }
        udp = {io, boost::asio::ip::udp::v4()};
        udp.bind({address, number()}, error);
        if (!error) {
            udp.non_blocking(true);
            return;
        }
    }
    throw cannotServe(error, "UDP", address, number());
}
