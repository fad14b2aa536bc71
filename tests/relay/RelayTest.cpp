#include "peer/Endpoints.h"
#include "relay/Relay.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <unistd.h>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <set>
#include <tuple>

using namespace relay;
using namespace std::chrono_literals;
using namespace std::string_literals;
using peer::DatagramEnd;
using peer::StreamEnd;

namespace {

using Lines = std::multiset<std::string>;

std::string randomBytes(std::size_t size)
{
    static std::mt19937 engine;
    std::string bytes(size, '\0');
    std::generate(bytes.begin(), bytes.end(), [] { return static_cast<char>(engine()); });
    return bytes;
}

auto openDescriptors()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

/// A server's ports, a relay before them, and the ends of both sides.
class LocalNetwork : public peer::Endpoints
{
public:
    explicit LocalNetwork(const Conditions& conditions = {}, RelayConfig config_ = {})
        : config(std::move(config_))
    {
        config.conditions = conditions;
        config.serverHost = "127.0.0.1";
        config.serverPort = std::to_string(server.number());
        config.log = [this](const std::string& line) { log.insert(line); };
        relay.emplace(io, config);
        relay->start();
        address = peer::loopback(relay->port());
    }

    RelayConfig config;
    PortPair server{io, 0};
    DatagramEnd& serverDatagrams = add(std::move(server.udp));
    Lines log;
    std::optional<Relay> relay;
    DatagramEnd::Address address;

    StreamEnd& connect() { return Endpoints::connect(relay->port()); }
    /// The server's end of the connection made last.
    StreamEnd& accept()
    {
        boost::asio::ip::tcp::socket socket(io);
        boost::system::error_code error;
        server.acceptor.non_blocking(true);
        EXPECT_TRUE(await([&] { return !server.acceptor.accept(socket, error); }));
        return add(std::move(socket));
    }
    bool awaitLog(const std::string& line)
    {
        return await([&] { return log.count(line) > 0; });
    }
    bool serverReceives(const std::string& datagram)
    {
        const auto& received = serverDatagrams.received;
        return await([&] { return !received.empty() && received.back().bytes == datagram; });
    }
};

}  // namespace

// Of the two connections the client half closes the first, the server the second; the other end goes on.
TEST(Relay, PassesOnAndRecordsWhatEachFlowSends)
{
    RelayConfig config;
    config.seed = 7;
    config.recordPath = testing::TempDir() + "relayed-" + std::to_string(getpid());
    LocalNetwork network({20, 20, 20, 10, 10}, config);
    std::map<std::tuple<int, std::uint32_t, int>, std::string> sent, recorded;
    const auto pass = [&](DatagramEnd& from, const DatagramEnd::Address& to, DatagramEnd& end,
                          const Flow& flow) {
        Impairment impairment(network.config.conditions, config.seed, flow);
        Lines expected, arrived;
        end.received.clear();
        for (std::size_t i = 0; i < 150; ++i) {  // more could overflow a socket's buffer at once
            const std::string bytes = randomBytes(i == 9 ? 60'000 : i % 9);
            for (unsigned copies = impairment.next().copies; copies > 0; --copies) {
                expected.insert(bytes);
            }
            from.send(bytes, to);
            network.poll();
            sent[{1, flow.number, int(flow.direction)}] += bytes;
        }
        EXPECT_TRUE(network.await([&] { return end.received.size() >= expected.size(); }));
        for (const peer::Datagram& datagram : end.received) {
            arrived.insert(datagram.bytes);
        }
        EXPECT_TRUE(arrived == expected) << "the seed says which are lost";
    };
    for (const std::uint32_t number : {1U, 2U}) {
        StreamEnd &stream = network.connect(), &serverStream = network.accept();
        StreamEnd &early = number == 1 ? stream : serverStream, &late = number == 1 ? serverStream : stream;
        const std::string first = randomBytes(60'000), second = randomBytes(60'001);
        late.send(second);
        early.send(first);
        early.finishSending();
        EXPECT_TRUE(network.await([&] { return late.end == boost::asio::error::eof; }));
        EXPECT_FALSE(early.end) << "the other direction stays open";
        late.send("more");
        late.finishSending();
        EXPECT_TRUE(network.await([&] { return early.end == boost::asio::error::eof; }));
        EXPECT_TRUE(late.received == first && early.received == second + "more");
        EXPECT_TRUE(network.awaitLog("connection " + std::to_string(number) + ": closed"));
        sent[{0, number, number - 1}] = first + "CLOSED";
        sent[{0, number, 2 - number}] = second + "moreCLOSED";
        sent[{0, number, 0}].insert(0, "OPENED");

        DatagramEnd &client = network.addDatagrams(), &server = network.serverDatagrams;
        sent[{1, number, 0}] = "OPENED";
        pass(client, network.address, server, {Transport::datagrams, number, Direction::toServer});
        pass(server, server.received.back().sender, client,
             {Transport::datagrams, number, Direction::toClient});
        EXPECT_EQ(client.received.back().sender, network.address);
    }
    for (const Chunk& chunk : readRecording(config.recordPath, {})) {
        recorded[{chunk.transport(), chunk.number(), chunk.direction()}] +=
            chunk.kind() == Chunk::BYTES ? chunk.bytes() : Chunk::Kind_Name(chunk.kind());
    }
    EXPECT_TRUE(recorded == sent);
    std::filesystem::remove(config.recordPath);
}

TEST(Relay, BuffersABoundedPartOfAPausedStream)
{
    LocalNetwork network;
    StreamEnd &talker = network.connect(), &slowServer = network.accept();
    slowServer.paused = true;
    const std::string flood = randomBytes(24U << 20U);  // more than the kernel's own buffers and 256 KiB
    talker.send(flood);
    network.pass(2s);
    EXPECT_FALSE(talker.isSent());
    StreamEnd &client = network.connect(), &server = network.accept();
    client.send("hello");
    EXPECT_TRUE(network.await([&] { return server.received == "hello"; })) << "nobody else is stalled";
    slowServer.paused = false;
    EXPECT_TRUE(network.await([&] { return slowServer.received.size() == flood.size(); }));
    EXPECT_TRUE(slowServer.received == flood);
}

TEST(Relay, DropsIdleFlowsForANewSender)
{
    LocalNetwork network;
    DatagramEnd &early = network.addDatagrams(), &late = network.addDatagrams();
    early.send("first", network.address);
    EXPECT_TRUE(network.serverReceives("first"));
    const auto address = network.serverDatagrams.received.back().sender;
    for (std::size_t i = 0; i < 2 * Relay::mostFlows; ++i) {
        network.addDatagrams().send("!", network.address);
        network.poll();
    }
    const auto descriptors = openDescriptors();
    EXPECT_TRUE(network.await([&] {
        early.send("still", network.address);
        late.send("new", network.address);
        return network.serverDatagrams.received.back().bytes == "new";
    }));
    EXPECT_LT(openDescriptors(), descriptors) << "of the idle flows";
    early.send("last", network.address);
    EXPECT_TRUE(network.serverReceives("last"));
    EXPECT_EQ(network.serverDatagrams.received.back().sender, address) << "who sends keeps the flow";
    EXPECT_EQ(network.log, Lines{"ignoring new senders of datagrams: 64 are active"});
}

TEST(Relay, LogsEachOverflowOnce)
{
    LocalNetwork network({1'000});
    DatagramEnd& client = network.addDatagrams();
    for (const unsigned times : {1U, 2U}) {
        for (int i = 0; i < 50; ++i) {
            client.send(std::string(60'000, 'x'), network.address);
            network.poll();
        }
        EXPECT_EQ(network.log.count("datagrams 1: too many are under way, some are lost"), times);
        network.pass(1'100ms);
    }
}

TEST(Relay, TurnsTooManyConnectionsAwayUntilOthersEnd)
{
    LocalNetwork network;
    const auto descriptors = openDescriptors();
    for (const unsigned times : {1U, 2U}) {
        std::vector<StreamEnd*> clients;
        for (std::size_t i = 0; i < Relay::mostLinks + 3; ++i) {
            clients.push_back(&network.connect());
            network.poll();
        }
        EXPECT_TRUE(network.await([&] { return clients.back()->end.failed(); }));
        EXPECT_EQ(network.log.count("turning away connections: 64 are open"), times);
        EXPECT_EQ(network.log.count("connection " + std::to_string(times * 64 + 1) + ": opened"), 0U);
        for (StreamEnd* const client : clients) {
            client->reset();
        }
        EXPECT_TRUE(network.await([&] { return openDescriptors() == descriptors; }));
        EXPECT_TRUE(network.awaitLog("connection " + std::to_string(times * 64) + ": broken"));
    }
}

#ifndef __SANITIZE_ADDRESS__  // the sanitizers' check of virtual calls needs descriptors itself
TEST(Relay, OutlivesAShortageOfDescriptors)
{
    LocalNetwork network;
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    for (const char* number : {"1", "2"}) {
        network.connect();
        DatagramEnd& client = network.addDatagrams();
        client.send("?", network.address);
        const int firstFree = dup(0);
        close(firstFree);
        const rlimit none{static_cast<rlim_t>(firstFree), limit.rlim_max};
        setrlimit(RLIMIT_NOFILE, &none);
        network.pass(700ms);  // for some more tries
        setrlimit(RLIMIT_NOFILE, &limit);
        EXPECT_TRUE(network.awaitLog("connection "s + number + ": opened"));
        client.send(number, network.address);
        EXPECT_TRUE(network.serverReceives(number));
    }
    const std::string shortage = "cannot take connections: Too many open files";
    const std::string flows = "ignoring new senders of datagrams: Too many open files";
    EXPECT_EQ(network.log,
              (Lines{shortage, flows, "connection 1: opened", shortage, flows, "connection 2: opened"}));
}
#endif

TEST(Relay, CutsConnectionsAndFlowsAtTheirAge)
{
    RelayConfig config;
    config.cutAfter = 0.3;
    LocalNetwork network({}, config);
    const Time opened = Clock::now();
    StreamEnd &client = network.connect(), &server = network.accept();
    DatagramEnd& datagrams = network.addDatagrams();
    const auto isCut = [&] {
        datagrams.send("?", network.address);
        return client.end && server.end && network.log.size() == 3;
    };
    EXPECT_TRUE(network.await(isCut));
    EXPECT_GE(Clock::now(), opened + 300ms);
    EXPECT_EQ(network.log, (Lines{"connection 1: opened", "connection 1: cut", "datagrams 1: cut"}));
    EXPECT_GT(network.serverDatagrams.received.size(), 3U);
    network.serverDatagrams.received.clear();
    datagrams.send("?", network.address);
    network.pass(100ms);
    EXPECT_TRUE(network.serverDatagrams.received.empty()) << "its sender stays cut";
}

// And delays both transports.
TEST(Relay, OutlivesAServerThatBreaksAndComesBack)
{
    LocalNetwork network({50});
    StreamEnd &client = network.connect(), &server = network.accept();
    Time sent = Clock::now();
    client.send("hello");
    EXPECT_TRUE(network.await([&] { return server.received == "hello"; }));
    EXPECT_GE(Clock::now(), sent + 50ms);
    client.send("still under way when the server goes");
    network.pass(20ms);
    server.send("goodbye");
    server.reset();
    EXPECT_TRUE(network.await([&] { return client.end == boost::asio::error::connection_reset; }));
    EXPECT_EQ(client.received, "goodbye");

    const std::uint16_t port = network.server.number();
    network.server.acceptor.close();
    network.serverDatagrams.socket.close();
    DatagramEnd& datagrams = network.addDatagrams();
    datagrams.send("?", network.address);
    StreamEnd& late = network.connect();
    EXPECT_TRUE(network.await([&] { return late.end.failed(); }));
    network.pass(200ms);  // until the datagram is refused, too, which nobody needs to know

    network.server = PortPair(network.io, port);
    network.serverDatagrams.socket = std::move(network.server.udp);
    sent = Clock::now();
    datagrams.send("again", network.address);
    EXPECT_TRUE(network.serverReceives("again"));
    EXPECT_GE(Clock::now(), sent + 50ms);
    network.connect();
    EXPECT_TRUE(network.awaitLog("connection 3: opened"));
    EXPECT_EQ(network.log,
              (Lines{"connection 1: opened", "connection 1: broken", "connection 2: opened",
                     "connection 2: cannot reach the server: Connection refused", "connection 3: opened"}));
    network.relay->stop();
    network.io.restart();
    network.io.run_for(5s);
    EXPECT_TRUE(network.io.stopped()) << "no work is left";
}

TEST(Relay, RefusesItselfAsServerAndKeepsTheRecording)
{
    RelayConfig config;
    config.recordPath = testing::TempDir() + "kept-" + std::to_string(getpid());
    std::ofstream(config.recordPath) << "older";
    boost::asio::io_context io;
    config.port = PortPair(io, 0).number();
    config.serverPort = std::to_string(config.port);
    for (const char* host : {"127.0.0.1", "0.0.0.0", "::ffff:127.0.0.1"}) {
        config.serverHost = host;
        EXPECT_THROW(Relay(io, config), std::runtime_error) << host;
    }
    EXPECT_EQ(std::filesystem::file_size(config.recordPath), 5U);
    std::filesystem::remove(config.recordPath);
}
