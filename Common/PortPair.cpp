#include "Common/PortPair.h"

#include <boost/system/system_error.hpp>

#include <string>

namespace {

using boost::asio::ip::tcp;
using boost::asio::ip::udp;

constexpr int attempts = 16;  ///< someone else may hold the UDP port of the TCP port we were given

tcp::acceptor listenOn(boost::asio::io_context& io, std::uint16_t port)
{
    try {
        return {io, {boost::asio::ip::address_v4::loopback(), port}};
    } catch (const boost::system::system_error& error) {
        throw boost::system::system_error(error.code(), "cannot serve on TCP port " + std::to_string(port));
    }
}

boost::system::error_code bindUdp(udp::socket& socket, std::uint16_t port)
{
    boost::system::error_code error;
    socket.open(udp::v4());
    socket.bind({boost::asio::ip::address_v4::loopback(), port}, error);
    if (error) {
        socket.close();
    }
    return error;
}

}  // namespace

PortPair::PortPair(boost::asio::io_context& io, std::uint16_t port) : acceptor(io), udp(io)
{
    boost::system::error_code error;
    for (int attempt = 0; attempt < (port == 0 ? attempts : 1); ++attempt) {
        acceptor = listenOn(io, port);
        error = bindUdp(udp, number());
        if (!error) {
            udp.non_blocking(true);
            return;
        }
    }
    throw boost::system::system_error(error, "cannot serve on UDP port " + std::to_string(number()));
}
