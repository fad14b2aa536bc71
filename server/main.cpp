#include "Common/PrintableText.h"
#include "server/net/MeasurementLog.h"
#include "server/net/ServerOptions.h"
#include "service/StatusLine.h"

#include <boost/asio/local/datagram_protocol.hpp>
#include <boost/asio/signal_set.hpp>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

namespace {

/// Reports to a service manager that waits for it, as systemd does (Type=notify), that players can join.
void reportReadiness(boost::asio::io_context& io)
{
    const char* const name = std::getenv("NOTIFY_SOCKET");
    if (name == nullptr) {
        return;
    }
    std::string path = name;
    if (path.rfind('@', 0) == 0) {
        path[0] = '\0';  // a name outside the file system
    }
    try {
        boost::asio::local::datagram_protocol::socket socket(io);
        socket.connect(path);
        socket.send(boost::asio::buffer(std::string_view("READY=1")));
    } catch (const boost::system::system_error& error) {
        writeStatusLine(std::string("cannot report to the service manager: ") + error.what());
    }
}

void serve(practice::ServerOptions& options)
{
    options.server.log = writeStatusLine;
    boost::asio::io_context io(1);
    practice::PracticeServer server(io, options.server);
    std::optional<practice::MeasurementLog> measurements;
    if (!options.measurements.empty()) {
        measurements.emplace(io, server, options.measurements, writeStatusLine);
    }
    boost::asio::signal_set signals(io, SIGINT, SIGTERM);
    signals.async_wait([&](const boost::system::error_code&, int) {
        server.stop();
        io.stop();
    });
    server.start();
    writeStatusLine("ready " + options.server.bind.to_string() + ":" + std::to_string(server.port()));
    reportReadiness(io);
    io.run();
    writeStatusLine(server.timing());
}

}  // namespace

int main(int argc, char** argv)
{
    std::signal(SIGPIPE, SIG_IGN);  // the match goes on when nobody reads our output
    std::signal(SIGXFSZ, SIG_IGN);  // and when the log has reached its limit
    try {
        practice::ServerOptions options;
        if (const auto status = practice::readServerOptions(argc, argv, options)) {
            return *status;
        }
        serve(options);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vantor-server: %s\n", printable(error.what()).c_str());
        return 1;
    }
}
