#include "GUIClient/ClientOptions.h"

#include <boost/program_options/errors.hpp>
#include <boost/program_options/options_description.hpp>
#include <boost/program_options/parsers.hpp>
#include <boost/program_options/variables_map.hpp>

#include <algorithm>
#include <cstring>
#include <iostream>

namespace {

namespace po = boost::program_options;

po::options_description allowedOptions()
{
    po::options_description options("Allowed options");
    auto add = options.add_options();
    add("help", "produce help message");
    add("host", po::value<std::string>()->default_value("127.0.0.1"), "set game server host");
    add("port", po::value<std::string>()->default_value("21042"), "set game server port");
    add("udp-timeout", po::value<unsigned int>()->default_value(10),
        "exit if no packets received within this timout");
    return options;
}

po::variables_map parse(int argc, const char* const* argv, const po::options_description& options)
{
    try {
        po::variables_map values;
        po::store(po::parse_command_line(argc, argv, options), values);
        po::notify(values);
        return values;
    } catch (const po::error&) {
        // The handler of uncaught exceptions calls what(). That of the library never returns if an argument
        // contains one of its placeholders, such as %value%.
        if (std::none_of(argv, argv + argc,
                         [](const char* text) { return std::strchr(text, '%') != nullptr; })) {
            throw;
        }
        throw po::error("Malformed command line");
    }
}

}  // namespace

bool readClientOptions(int argc, const char* const* argv, ClientOptions& options)
{
    const po::options_description allowed = allowedOptions();
    const po::variables_map values = parse(argc, argv, allowed);
    if (values.count("help") != 0) {
        std::cout << allowed << "\n";
        return false;
    }
    options = {values["host"].as<std::string>(), values["port"].as<std::string>(),
               values["udp-timeout"].as<unsigned int>()};
    return true;
}
