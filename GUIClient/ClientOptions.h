#pragma once

#include <string>

/// What the client's command line sets.
struct ClientOptions
{
    std::string host;
    std::string port;             ///< a number or a service name
    unsigned int udpTimeout = 0;  ///< seconds
};

/// Reads the command line into `options`. Returns false after --help, which prints the options.
///
/// Throws boost::program_options::error if the command line is bad.
bool readClientOptions(int argc, const char* const* argv, ClientOptions& options);
