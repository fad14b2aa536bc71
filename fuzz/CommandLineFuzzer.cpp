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
    readServerOptions(argc, argv.data(), server);
    relay::RelayConfig relay;
    if (!readCommandLine(argc, argv.data(), relay)) {
        const relay::Time now(std::chrono::hours(1));
        relay::DelayQueue queue(relay::Impairment(relay.conditions, relay.seed, {}));
        queue.push(now, std::string(1000, 'x'));
        require(queue.nextDue() >= now && relay.cutTime() > relay::Time(), "a fault is in the past");
    }
    return 0;
}
