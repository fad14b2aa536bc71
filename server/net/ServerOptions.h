#pragma once

#include "server/match/MatchSettings.h"

#include <boost/asio/ip/address_v4.hpp>

#include <cstdint>
#include <optional>
#include <string>

namespace practice {

/// What the server's command line sets.
struct ServerOptions
{
    boost::asio::ip::address_v4 bind = boost::asio::ip::address_v4::loopback();
    std::uint16_t port = 21042;  ///< 0: any free port
    unsigned bots = 16;
    MatchSettings match;
    std::string measurements;  ///< the file to append to; empty: none
};

/// Reads the command line into `options`. Returns the status to end with, if the program should not go on;
/// see commandline::parse.
std::optional<int> readServerOptions(int argc, const char* const* argv, ServerOptions& options);

}  // namespace practice
