#pragma once

#include <cstdint>
#include <string>
#include <variant>

namespace practice {

struct ServerOptions
{
    std::uint16_t port = 21042;
    unsigned bots = 8;
    std::uint32_t seed = 1;
};

/// Why there are no options: a text to show and the status to end with.
struct OptionsEnd
{
    std::string text;
    int status;  ///< 0 for help, 2 for a bad command line
};

/// Reads the command line of the server; takes nothing for granted.
std::variant<ServerOptions, OptionsEnd> readServerOptions(int argc, const char* const* argv);

}  // namespace practice
