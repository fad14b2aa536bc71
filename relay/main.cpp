#include "Common/PrintableText.h"
#include "relay/Relay.h"
#include "relay/Replay.h"
#include "service/StatusLine.h"

#include <boost/asio/signal_set.hpp>

#include <csignal>
#include <cstdio>
#include <memory>
#include <string>

namespace {

void report(const std::string& line)
{
    std::fprintf(stderr, "vantor-relay: %s\n", printable(line).c_str());
}

/// Runs a relay or a replayer until a signal asks for the end. Returns the status.
int serve(const relay::RelayConfig& config)
{
    boost::asio::io_context io(1);
    std::unique_ptr<relay::Listener> service;
    std::string role;
    if (config.replayPath.empty()) {
        service = std::make_unique<relay::Relay>(io, config);
        role = "to " + config.serverHost + ":" + config.serverPort + ", " + describe(config);
    } else {
        service = std::make_unique<relay::Replayer>(io, config.port,
                                                    relay::readServerTrack(config.replayPath, report),
                                                    config.replaySpeed, config.log);
        role = "replaying " + printable(config.replayPath);
    }
    boost::asio::signal_set signals(io, SIGINT, SIGTERM);
    signals.async_wait([&service](const boost::system::error_code&, int) { service->stop(); });
    service->start();
    writeStatusLine("ready 127.0.0.1:" + std::to_string(service->port()));
    writeStatusLine(role);
    io.run();
    return service->isComplete() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv)
{
    std::signal(SIGPIPE, SIG_IGN);  // a reader of our output that left must not end the relay
    std::signal(SIGXFSZ, SIG_IGN);  // a recording at the limit is an error, with a message
    try {
        relay::RelayConfig config;
        config.log = writeStatusLine;
        if (const auto status = relay::readCommandLine(argc, argv, config)) {
            return *status;
        }
        return serve(config);
    } catch (const std::exception& error) {
        report(error.what());
        return 1;
    }
}
