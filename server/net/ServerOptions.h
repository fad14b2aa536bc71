#pragma once

#include "server/match/Rules.h"
#include "service/LegacyCommandLine.h"

#include <boost/asio/ip/address_v4.hpp>

#include <cstdint>
#include <string>
#include <variant>

namespace practice {

struct ServerOptions
{
    boost::asio::ip::address_v4 bind;
    std::uint16_t port = 0;
    unsigned bots = 0;
    MatchSettings match;
    std::string measurements;  ///< the file to append to; empty: none
};

/// Reads the command line of the server; takes nothing for granted.
std::variant<ServerOptions, commandline::End> readServerOptions(int argc, const char* const* argv);

}  // namespace practice
