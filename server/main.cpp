#include "Common/PrintableText.h"
#include "server/net/MeasurementLog.h"
#include "server/net/PracticeServer.h"
#include "server/net/ServerOptions.h"
#include "service/LegacyCommandLine.h"
#include "service/StatusLine.h"

#include <boost/asio/signal_set.hpp>

#include <csignal>
#include <cstdio>
#include <optional>
#include <string>

namespace {

int serve(const practice::ServerOptions& options)
{
    practice::ServerConfig config;
    config.bind = options.bind;
    config.port = options.port;
    config.bots = options.bots;
    config.match = options.match;
    config.log = writeStatusLine;

    boost::asio::io_context io(1);
    practice::PracticeServer server(io, config);
    std::optional<practice::MeasurementLog> measurements;
    if (!options.measurements.empty()) {
        measurements.emplace(io, server.currentMatch(), options.measurements, writeStatusLine);
    }
    boost::asio::signal_set signals(io, SIGINT, SIGTERM);
    signals.async_wait([&](const boost::system::error_code&, int) {
        server.stop();
        if (measurements) {
            measurements->stop();
        }
    });
    server.start();
    writeStatusLine("ready " + options.bind.to_string() + ":" + std::to_string(server.port()));
    io.run();
    writeStatusLine(server.timing());
    return 0;
}

}  // namespace

int main(int argc, char** argv)
{
    std::signal(SIGPIPE, SIG_IGN);  // nor may a reader that is gone end the match
    std::signal(SIGXFSZ, SIG_IGN);  // nor a log that has grown to the limit
    try {
        const auto parsed = practice::readServerOptions(argc, argv);
        if (const auto* end = std::get_if<commandline::End>(&parsed)) {
            return commandline::show(*end);
        }
        return serve(std::get<practice::ServerOptions>(parsed));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vantor-server: %s\n", printable(error.what()).c_str());
        return 1;
    }
}
