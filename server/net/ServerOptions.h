#pragma once

#include "server/net/PracticeServer.h"

#include <optional>
#include <string>

namespace practice {

/// What the server's command line sets.
struct ServerOptions
{
    ServerConfig server;
    std::string measurements;  ///< the file to append to; empty: none
};

/// Reads the command line into `options`. Returns the status to end with, if the program should not go on;
/// see commandline::parse.
std::optional<int> readServerOptions(int argc, const char* const* argv, ServerOptions& options);

}  // namespace practice
