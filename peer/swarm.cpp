#include "peer/Swarm.h"
#include "Common/PrintableText.h"
#include "service/LegacyCommandLine.h"

#include <boost/program_options/value_semantic.hpp>

#include <cstdio>
#include <exception>
#include <iostream>
#include <limits>
#include <stdexcept>
#include <variant>

namespace {

namespace po = boost::program_options;

constexpr const char* program = "vantor-swarm";
constexpr std::chrono::seconds warmUp{3};
constexpr std::uint32_t mostClients = 1000;
constexpr std::uint32_t longest = 86'400;  ///< seconds

struct Options
{
    std::uint16_t port;
    unsigned clients;
    std::chrono::seconds seconds;
};

po::options_description description()
{
    po::options_description options("vantor-swarm: plays many clients against a server on 127.0.0.1");
    const auto number = [](const char* standard) {
        return po::value<std::string>()->default_value(standard)->value_name("N");
    };
    commandline::addInformation(options);
    options.add_options()("port", number("21042"), "of the server");
    options.add_options()("clients", number("64"), "how many, 1 to 1000");
    options.add_options()("seconds", number("60"), "to measure, after 3 to warm up");
    return options;
}

std::uint32_t positive(const po::variables_map& values, const char* option, std::uint32_t largest)
{
    const std::uint32_t value = commandline::wholeNumber(option, values[option].as<std::string>(), largest);
    if (value == 0) {
        throw std::invalid_argument("--" + std::string(option) + " wants at least 1");
    }
    return value;
}

Options optionsOf(const po::variables_map& values)
{
    return {static_cast<std::uint16_t>(positive(values, "port", std::numeric_limits<std::uint16_t>::max())),
            positive(values, "clients", mostClients),
            std::chrono::seconds(positive(values, "seconds", longest))};
}

bool run(const Options& options)
{
    peer::Swarm swarm({boost::asio::ip::address_v4::loopback(), options.port}, options.clients);
    swarm.play(warmUp, options.seconds);
    const bool isContent = swarm.report(std::cout);
    if (!std::cout.flush()) {
        throw std::runtime_error("cannot write the report");
    }
    return isContent;
}

}  // namespace

int main(int argc, char** argv)
{
    try {
        const auto parsed = commandline::read<Options>(program, argc, argv, description(), optionsOf);
        if (const auto* end = std::get_if<commandline::End>(&parsed)) {
            return commandline::show(*end);
        }
        return run(std::get<Options>(parsed)) ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", program, printable(error.what()).c_str());
        return 1;
    }
}
