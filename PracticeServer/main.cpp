#include "PracticeServer/MeasurementLog.h"
#include "PracticeServer/PracticeServer.h"
#include "PracticeServer/ServerOptions.h"

#include <boost/asio/signal_set.hpp>

#include <poll.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <iostream>
#include <optional>
#include <string>

namespace {

/// Writes one line, unless that would block: whoever started us may have stopped reading, and players could
/// stall the match by making us write.
void writeLine(const std::string& line)
{
    pollfd output{STDOUT_FILENO, POLLOUT, 0};
    if (poll(&output, 1, 0) == 1) {
        std::cout << line << std::endl;
    }
}

int serve(const practice::ServerOptions& options)
{
    practice::ServerConfig config;
    config.bind = options.bind;
    config.port = options.port;
    config.bots = options.bots;
    config.match = options.match;
    config.log = writeLine;

    boost::asio::io_context io(1);
    practice::PracticeServer server(io, config);
    std::optional<practice::MeasurementLog> measurements;
    if (!options.measurements.empty()) {
        measurements.emplace(io, options.measurements, writeLine);
    }
    boost::asio::signal_set signals(io, SIGINT, SIGTERM);
    signals.async_wait([&](const boost::system::error_code&, int) {
        server.stop();
        if (measurements) {
            measurements->stop();
        }
    });
    server.start();
    writeLine("ready " + options.bind.to_string() + ":" + std::to_string(server.port()));
    io.run();
    writeLine(server.timing());
    return 0;
}

}  // namespace

int main(int argc, char** argv)
{
    std::signal(SIGPIPE, SIG_IGN);  // nor may a reader that is gone end the match
    try {
        const auto parsed = practice::readServerOptions(argc, argv);
        if (const auto* end = std::get_if<practice::OptionsEnd>(&parsed)) {
            (end->status == 0 ? std::cout : std::cerr) << end->text;
            return end->status;
        }
        return serve(std::get<practice::ServerOptions>(parsed));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vantor-server: %s\n", error.what());
        return 1;
    }
}
