#include "server/net/ServerOptions.h"
#include "tests/support/Process.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/local/datagram_protocol.hpp>

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <thread>
#include <tuple>

using namespace practice;
using support::Process;
using namespace std::chrono_literals;

namespace {

Process run(std::vector<std::string> options)
{
    options.insert(options.begin(), VANTOR_SERVER);
    return Process(options);
}

}  // namespace

TEST(ServerProgram, TakesItsOptions)
{
    const char* const arguments[] = {
        "vantor-server",     "--port=0",           "--bind",         "0.0.0.0",         "--bots=64",
        "--difficulty=hard", "--seed=4294967295",  "--spawn=grid",   "--per-address=0", "--log=m.csv",
        "--score-limit=0",   "--time-limit=86400", "--friendly-fire"};
    ServerOptions given;
    EXPECT_EQ(readServerOptions(static_cast<int>(std::size(arguments)), arguments, given), std::nullopt);
    const ServerConfig& server = given.server;
    const MatchSettings& match = server.match;
    EXPECT_EQ(std::tuple(server.port, server.bots, server.placesPerAddress, given.measurements),
              std::tuple(0, 64U, 0U, "m.csv"));
    EXPECT_EQ(std::tuple(match.seed, match.scoreLimit, match.timeLimit), std::tuple(4294967295U, 0, 86400));
    EXPECT_EQ(std::tuple(match.difficulty, match.spawn), std::tuple(Difficulty::hard, General::GRID));
    EXPECT_TRUE(server.bind.is_unspecified() && match.friendlyFire);
}

TEST(ServerProgram, SaysInOneLineWhyItCannotServe)
{
    boost::asio::io_context io;
    const PortPair taken(io, 0);
    const std::tuple<std::vector<std::string>, std::string, std::string> cases[] = {
        {{"--bots", "none"}, "status 2", "--bots: wants a whole number from 0 to 64, not 'none'"},
        {{"--port=65536"}, "status 2", "65535"},
        {{"--per-address=65"}, "status 2", "64"},
        {{"--bind=localhost"}, "status 2", "an IPv4 address"},
        {{"--bind=224.0.0.1"}, "status 2", "an IPv4 address"},
        {{"--bind=255.255.255.255"}, "status 2", "an IPv4 address"},
        {{"--difficulty=easyy"}, "status 2", "easy,hard,normal"},
        {{"--log", ""}, "status 2", "the name of a file"},
        {{"--friendly-fire=no"}, "status 2", "friendly-fire"},
        {{"--port", std::to_string(taken.number())}, "status 1", "Address already in use"},
        {{"--port", "0", "--bind", "192.0.2.1"}, "status 1", "Cannot assign requested address"},
        {{"--port", "0", "--log", "/no/such/folder"}, "status 1", "No such file or directory"},
        {{"--port", "0", "--log", "/tmp"}, "status 1", "not a regular file"},
        {{"--port", "0", "--log", "/no/such\nfolder"}, "status 1", "'/no/such?folder'"},
    };
    for (const auto& [options, end, text] : cases) {
        Process server = run(options);
        EXPECT_EQ(server.end(), end);
        EXPECT_TRUE(server.hasPrinted(text)) << server.output();
        const std::string output = server.output();
        EXPECT_EQ(std::count(output.begin(), output.end(), '\n'), 1) << output;
    }
    EXPECT_EQ(run({"--help"}).end(), "status 0");
    EXPECT_EQ(Process({"sh", "-c", "exec \"$0\" --help >/dev/full", VANTOR_SERVER}).end(), "status 1");
}

TEST(ServerProgram, PrintsItsMatchesAndEndsAtASignal)
{
    const std::string table =
        "match 1 over after 0:01: a draw, blue 0 red 0\n"
        "  blue Altair             0 kills    0 deaths\n"
        "  red  Bellatrix          0 kills    0 deaths\n";
    for (const int signal : {SIGINT, SIGTERM}) {
        Process server = run({"--port", "0", "--bots", "2", "--time-limit", "1"});
        EXPECT_TRUE(peer::eventually([&] { return server.hasPrinted("\n"); }));
        EXPECT_EQ(server.output().find("ready 127.0.0.1:"), 0U);
        server.signal(SIGSTOP);
        std::this_thread::sleep_for(300ms);  // longer than it catches up with
        server.signal(SIGCONT);
        EXPECT_TRUE(peer::eventually([&] { return server.hasPrinted(table); }, 30s)) << server.output();
        server.signal(signal);
        EXPECT_EQ(server.end(), "status 0");
        EXPECT_TRUE(server.hasPrinted(" ms given up\n")) << server.output();
    }
}

TEST(ServerProgram, LogsMeasurementsUntilTheDiskIsFull)
{
    const std::string log = std::filesystem::temp_directory_path() / ("vantor-" + std::to_string(getpid()));
    std::filesystem::remove(log);
    const std::string command = "ulimit -f 3; exec \"$0\" --port 0 --bots 12 --log \"$1\"";
    const Process server({"sh", "-c", command, VANTOR_SERVER, log});
    const std::string line = "cannot write measurements to '" + log + "' any more\n";
    ASSERT_TRUE(peer::eventually([&] { return server.hasPrinted(line); }, 20s)) << server.output();
    std::this_thread::sleep_for(1500ms);  // until another row does not fit either
    EXPECT_EQ(server.output().find(line), server.output().rfind(line));
    EXPECT_EQ(std::filesystem::file_size(log), 1536U);
    EXPECT_EQ(support::outputOf({"sed", "-n", "3p", log}).substr(13 * 16, 16), "             12,")
        << "players";
    const std::string titles =
        "drops          ,latest step us ,port moves     ,qport guesses  ,turned away    ,";
    EXPECT_EQ(support::outputOf({"sed", "-n", "2p", log}).substr(17 * 16, 80), titles);
    EXPECT_EQ(support::outputOf({"sed", "-n", "3p", log}).substr(21 * 16), "              0,\n");

    const std::string picture = log + ".png";
    Process plot({VANTOR_TOOLS "/plot-log", log, picture});
    const std::string end = plot.end();
    std::filesystem::remove(log);
    if (end != "status 0" && plot.hasPrinted("no gnuplot")) {
        GTEST_SKIP() << "gnuplot is not installed, so the log was not drawn";
    }
    EXPECT_EQ(end, "status 0") << plot.output();
    EXPECT_GT(std::filesystem::file_size(picture), 10'000U);
    std::filesystem::remove(picture);
}

TEST(ServerProgram, TellsItsServiceManagerWhenItListens)
{
    using Socket = boost::asio::local::datagram_protocol::socket;
    const std::string path = testing::TempDir() + "vantor-notify-" + std::to_string(getpid());
    const std::pair<std::string, std::string> sockets[] = {{path, path}, {"@" + path, '\0' + path}};
    for (const auto& [name, address] : sockets) {
        boost::asio::io_context io;
        Socket manager(io, address);
        Process server({"env", "NOTIFY_SOCKET=" + name, VANTOR_SERVER, "--port", "0"});
        std::string received(100, ' ');
        manager.async_receive(boost::asio::buffer(received), [&](auto, auto size) { received.resize(size); });
        io.run_for(20s);
        EXPECT_EQ(received, "READY=1");
        EXPECT_TRUE(server.hasPrinted("ready 127.0.0.1:")) << server.output();

        server.signal(SIGTERM);
        EXPECT_EQ(server.end(1s), "status 0") << "a slow end holds up the machine's shutdown";
    }
    Process alone({"env", "NOTIFY_SOCKET=" + path, VANTOR_SERVER, "--port", "0"});
    EXPECT_TRUE(peer::eventually([&] { return alone.hasPrinted("cannot report to the service manager"); }));
    EXPECT_TRUE(alone.isRunning());
    std::filesystem::remove(path);
}
