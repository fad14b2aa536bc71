// Gives one command line to the client, the server and the relay. An input holds an argument a line.
#include "GUIClient/ClientOptions.h"
#include "fuzz/FuzzInput.h"
#include "relay/RelayConfig.h"
#include "server/net/ServerOptions.h"

#include <boost/program_options/errors.hpp>

#include <cstring>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string text(reinterpret_cast<const char*>(data), size);
    std::vector<const char*> argv = {"program", text.c_str()};
    for (char& c : text) {
        if (c == '\n') {
            c = '\0';
            argv.push_back(&c + 1);
        }
    }
    const int argc = static_cast<int>(argv.size());
    try {
        ClientOptions client;
        readClientOptions(argc, argv.data(), client);
    } catch (const boost::program_options::error& error) {
        require(std::strlen(error.what()) > 0, "the client gives no reason");
    }
    practice::ServerOptions server;
    require(readServerOptions(argc, argv.data(), server) ||
                (server.server.bots <= 64 && server.server.match.timeLimit <= 86400),
            "the server takes a number that is too large");
    relay::RelayConfig relay;
    if (!readCommandLine(argc, argv.data(), relay)) {
        require(relay.serverPort.empty() != relay.replayPath.empty(),
                "the relay has none or two of its purposes");
        for (const double percent :
             {relay.conditions.loss, 2 * relay.conditions.reorder, relay.replaySpeed}) {
            require(percent >= 0 && percent <= 100 && relay.cutTime() > relay::Time(),
                    "the relay takes a number out of range");
        }
    }
    return 0;
}
