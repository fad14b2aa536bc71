#pragma once

#include "peer/ProtocolChecker.h"
#include "server/match/Random.h"
#include "server/match/Ship.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ip/udp.hpp>
#include <boost/asio/steady_timer.hpp>

#include <array>
#include <string>

namespace peer {

/// A pilot without a screen: joins, steers by chance twenty times a second, fires about half of the time, and
/// reads everything. Lives on the thread that runs the io_context and must not move.
class SwarmClient
{
public:
    /// Connects at once; throws boost::system::system_error where that fails. `number` makes it differ from
    /// the others.
    SwarmClient(boost::asio::io_context& io, const boost::asio::ip::tcp::endpoint& endpoint, unsigned number);

    ProtocolChecker witness;
    std::string brokenOff;  ///< why the connection ended; empty while it stands

private:
    boost::asio::ip::tcp::socket tcp;
    boost::asio::ip::udp::socket udp;
    boost::asio::ip::udp::endpoint server;
    boost::asio::steady_timer timer;
    practice::Random random;
    practice::ShipInput input;
    std::array<char, 65536> stream{};
    std::array<char, 2048> datagram{};

    void receiveStream();
    void receiveDatagrams();
    void steerSoon();
    void steer();
    void changeCourse();
};

}  // namespace peer
