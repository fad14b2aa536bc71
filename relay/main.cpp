#include "Common/PrintableText.h"
#include "relay/Relay.h"
#include "relay/RelayOptions.h"
#include "relay/Replayer.h"
#include "service/LegacyCommandLine.h"
#include "service/StatusLine.h"

#include <boost/asio/signal_set.hpp>

#include <csignal>
#include <cstdio>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

void tell(const std::string& line)
{
    std::fprintf(stderr, "vantor-relay: %s\n", printable(line).c_str());
}

/// Runs a relay or a replayer until a signal asks for the end.
template <class Service>
int serve(boost::asio::io_context& io, Service& service, const std::string& role)
{
    boost::asio::signal_set signals(io, SIGINT, SIGTERM);
    signals.async_wait([&service](const boost::system::error_code&, int) { service.stop(); });
    service.start();
    writeStatusLine("ready 127.0.0.1:" + std::to_string(service.port()));
    writeStatusLine(role);
    io.run();
    return 0;
}

int passOn(const relay::RelayOptions& options)
{
    relay::RelayConfig config = options.config;
    config.log = writeStatusLine;
    std::optional<relay::RecordingWriter> recording;
    boost::asio::io_context io(1);
    relay::Relay relay(io, config);
    if (!options.recordPath.empty()) {  // only now: without a port no older recording is overwritten
        recording.emplace(options.recordPath);
        relay.recordInto(*recording);
    }
    return serve(io, relay,
                 "to " + config.serverHost + ":" + config.serverPort + ", " + relay::describe(config));
}

relay::ServerTrack scriptIn(const std::string& path)
{
    const std::vector<relay::Chunk> recording = relay::readRecording(path, tell);
    try {
        return relay::serverSide(recording);
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(path + ": " + error.what());
    }
}

int replay(const relay::RelayOptions& options)
{
    boost::asio::io_context io(1);
    relay::Replayer replayer(io, options.config.port, scriptIn(options.replayPath), options.replaySpeed,
                             writeStatusLine);
    return serve(io, replayer, "replaying " + printable(options.replayPath));
}

}  // namespace

int main(int argc, char** argv)
{
    std::signal(SIGPIPE, SIG_IGN);  // a reader that is gone must not end the line
    std::signal(SIGXFSZ, SIG_IGN);  // a recording at the limit is an error, with a message
    try {
        const auto parsed = relay::readRelayOptions(argc, argv);
        if (const auto* end = std::get_if<commandline::End>(&parsed)) {
            return commandline::show(*end);
        }
        const auto& options = std::get<relay::RelayOptions>(parsed);
        return options.replayPath.empty() ? passOn(options) : replay(options);
    } catch (const std::exception& error) {
        tell(error.what());
        return 1;
    }
}
