#include "tools/load/Swarm.h"

#include <boost/program_options.hpp>

#include <exception>
#include <iostream>

namespace {

namespace po = boost::program_options;

constexpr std::chrono::seconds warmUp{3};
constexpr unsigned mostClients = 1000;

bool run(const po::variables_map& values)
{
    const auto port = values["port"].as<std::uint16_t>();
    const auto clients = values["clients"].as<unsigned>();
    const auto seconds = values["seconds"].as<unsigned>();
    if (clients == 0 || clients > mostClients || seconds == 0) {
        throw std::invalid_argument("at least one client (and at most 1000) and one second");
    }
    load::Swarm swarm({boost::asio::ip::address_v4::loopback(), port}, clients);
    swarm.play(warmUp, std::chrono::seconds(seconds));
    return swarm.report(std::cout);
}

}  // namespace

int main(int argc, char** argv)
{
    po::options_description options("vantor-swarm: plays many clients against a server on 127.0.0.1");
    options.add_options()("help", "show this text");
    options.add_options()("port", po::value<std::uint16_t>()->default_value(21042), "of the server");
    options.add_options()("clients", po::value<unsigned>()->default_value(64), "how many");
    options.add_options()("seconds", po::value<unsigned>()->default_value(60),
                          "to measure, after 3 to warm up");
    try {
        po::variables_map values;
        po::store(po::parse_command_line(argc, argv, options), values);
        if (values.count("help") != 0) {
            std::cout << options;
            return 0;
        }
        return run(values) ? 0 : 1;
    } catch (const std::exception& error) {
        std::cerr << "vantor-swarm: " << error.what() << '\n';
        return 2;
    }
}
