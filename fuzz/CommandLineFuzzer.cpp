// Gives one command line to the client, the server and the relay. An input holds an argument a line.
#include "GUIClient/ClientOptions.h"
#include "fuzz/FuzzInput.h"
#include "relay/RelayConfig.h"
#include "server/net/ServerOptions.h"

#include <boost/program_options/errors.hpp>

#include <algorithm>
#include <cstring>
#include <sstream>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::istringstream lines(std::string(reinterpret_cast<const char*>(data), size));
    std::vector<std::string> arguments = {"program"};
    for (std::string line; std::getline(lines, line);) {
        arguments.push_back(line);
    }
    std::vector<const char*> argv;
    for (const std::string& argument : arguments) {
        argv.push_back(argument.c_str());
    }
    const int argc = static_cast<int>(argv.size());
    try {
        ClientOptions client;
        readClientOptions(argc, argv.data(), client);
    } catch (const boost::program_options::error& error) {
        require(std::strlen(error.what()) > 0, "the client gives no reason");
    }
    practice::ServerOptions options;
    if (!readServerOptions(argc, argv.data(), options)) {
        const practice::ServerConfig& server = options.server;
        require(server.bots <= 64 && server.placesPerAddress <= server.mostClients &&
                    server.match.timeLimit <= 86400,
                "the server takes a number that is too large");
    }
    relay::RelayConfig relay;
    if (!readCommandLine(argc, argv.data(), relay)) {
        const relay::Conditions& faults = relay.conditions;
        const double percents[] = {faults.loss, faults.duplicate, 2 * faults.reorder};
        const bool areShares = std::all_of(std::begin(percents), std::end(percents),
                                           [](double percent) { return percent >= 0 && percent <= 100; });
        require(areShares && faults.latency <= 10000 && relay.replaySpeed >= 0.01 && relay.replaySpeed <= 50,
                "the relay takes a number that is out of range");
        require(relay.serverPort.empty() != relay.replayPath.empty(),
                "the relay has none or two of its purposes");
        require(relay.cutTime() > relay::Time(), "the relay breaks before it begins");
    }
    return 0;
}
