#include "peer/Endpoints.h"
#include "relay/Relay.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <unistd.h>
#include <filesystem>
#include <random>
#include <set>

using namespace relay;
using namespace std::chrono_literals;
using namespace std::string_literals;
using peer::DatagramEnd;
using peer::StreamEnd;

namespace {

using Lines = std::vector<std::string>;

std::string randomBytes(std::size_t size, unsigned seed)
{
    std::mt19937 engine(seed);
    std::string bytes(size, '\0');
    std::generate(bytes.begin(), bytes.end(), [&engine] { return static_cast<char>(engine()); });
    return bytes;
}

Lines bytesOf(const DatagramEnd& end)
{
    Lines bytes;
    for (const peer::Datagram& datagram : end.received) {
        bytes.push_back(datagram.bytes);
    }
    return bytes;
}

std::string newest(const DatagramEnd& end)
{
    return end.received.empty() ? "" : end.received.back().bytes;
}

auto openDescriptors()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

/// A server's ports, a relay before them, and the ends of both sides.
class LocalNetwork : public peer::Endpoints
{
public:
    explicit LocalNetwork(const Conditions& conditions = {}, RelayConfig config = {})
        : relay(io, complete(conditions, std::move(config)))
    {
        relay.start();
    }

    PortPair server{io, 0};
    DatagramEnd& serverDatagrams = add(std::move(server.udp));
    Lines log;
    Relay relay;
    DatagramEnd::Address address = peer::loopback(relay.port());

    StreamEnd& connect() { return Endpoints::connect(relay.port()); }
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
        return await([&] { return std::count(log.begin(), log.end(), line) > 0; });
    }

private:
    RelayConfig complete(const Conditions& conditions, RelayConfig config)
    {
        config.conditions = conditions;
        config.serverHost = "127.0.0.1";
        config.serverPort = std::to_string(server.number());
        config.log = [this](const std::string& line) { log.push_back(line); };
        return config;
    }
};

/// What survives of `sent` to the server, and to the client, while a stream says a word each way and ends.
std::pair<Lines, Lines> recordedExchange(const Lines& sent, std::uint32_t seed, const std::string& path)
{
    RelayConfig config;
    config.seed = seed;
    config.recordPath = path;
    LocalNetwork network({2, 0, 20, 10, 10}, config);
    StreamEnd &stream = network.connect(), &serverStream = network.accept();
    stream.send("u\0p"s);
    serverStream.send("down");
    DatagramEnd &client = network.addDatagrams(), &server = network.serverDatagrams;
    const auto sendAll = [&](DatagramEnd& sender, const DatagramEnd::Address& to) {
        for (const std::string& datagram : sent) {
            sender.send(datagram, to);
            network.poll();
        }
        network.pass(400ms);
    };
    sendAll(client, network.address);
    sendAll(server, server.received.front().sender);
    stream.finishSending();
    serverStream.finishSending();
    EXPECT_TRUE(network.awaitLog("connection 1: closed"));
    const auto sorted = [](Lines lines) {  // a stall of this process may change the order
        std::sort(lines.begin(), lines.end());
        return lines;
    };
    return {sorted(bytesOf(server)), sorted(bytesOf(client))};
}

/// What was opened, said and closed in each flow.
std::map<std::pair<Transport, Direction>, std::string> contentOf(const std::string& path)
{
    std::map<std::pair<Transport, Direction>, std::string> content;
    for (const Chunk& chunk : readRecording(path, {})) {
        const std::array words = {" ", "opened ", "closed "};
        EXPECT_EQ(chunk.flow.number, 1U);
        content[{chunk.flow.transport, chunk.flow.direction}] +=
            chunk.bytes + words.at(static_cast<std::size_t>(chunk.kind));
    }
    return content;
}

}  // namespace

TEST(RelayStreams, ArriveWholeAndInOrderPerConnection)
{
    LocalNetwork network({20, 20});
    const auto descriptors = openDescriptors();
    for (int round = 0; round < 2; ++round) {
        StreamEnd* const ends[] = {&network.connect(), &network.accept(), &network.connect(),
                                   &network.accept()};
        std::string sent[4];
        for (unsigned i = 0; i < 4; ++i) {
            sent[i] = randomBytes(60'000 + i, i);
            ends[i]->send(sent[i]);
        }
        const auto isWhole = [&](unsigned i) { return ends[i]->received == sent[i ^ 1U]; };
        ends[0]->finishSending();  // a client's half close, then a server's
        ends[3]->finishSending();
        EXPECT_TRUE(network.await([&] { return ends[1]->end && ends[2]->end; }));
        EXPECT_TRUE(isWhole(1) && isWhole(2)) << "the end comes behind the last byte";
        EXPECT_FALSE(ends[0]->end || ends[3]->end) << "the other direction stays open";
        sent[1] += "more";
        ends[1]->send("more");
        sent[2] += "more";
        ends[2]->send("more");
        EXPECT_TRUE(network.await([&] { return isWhole(0) && isWhole(3); }));
        ends[1]->close();
        ends[2]->close();
        EXPECT_TRUE(network.await([&] { return ends[0]->end && ends[3]->end; }));
        EXPECT_EQ(ends[0]->end, boost::asio::error::eof);
        for (const int number : {1, 2}) {
            EXPECT_TRUE(network.awaitLog("connection " + std::to_string(2 * round + number) + ": closed"));
        }
        ends[0]->close();
        ends[3]->close();
    }
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST(RelayDatagrams, ReachTheServerAndTheRightClient)
{
    LocalNetwork network({20, 20});
    DatagramEnd& server = network.serverDatagrams;
    DatagramEnd* const clients[] = {&network.addDatagrams(), &network.addDatagrams()};
    const std::string sent[] = {randomBytes(60'000, 1), "", "one frame", randomBytes(2'000, 2)};
    for (unsigned i = 0; i < 4; ++i) {
        clients[i / 2]->send(sent[i], network.address);
    }
    EXPECT_TRUE(network.await([&] { return server.received.size() == 4; }));
    std::set<DatagramEnd::Address> addresses;
    for (const peer::Datagram& datagram : server.received) {
        addresses.insert(datagram.sender);
        server.send("re: " + datagram.bytes, datagram.sender);
    }
    EXPECT_EQ(addresses.size(), 2U) << "to the server each client has an address of its own";
    for (unsigned i = 0; i < 2; ++i) {
        EXPECT_TRUE(network.await([&] { return clients[i]->received.size() == 2; }));
        EXPECT_EQ(bytesOf(*clients[i]), (Lines{"re: " + sent[2 * i], "re: " + sent[2 * i + 1]}));
        EXPECT_EQ(clients[i]->received.front().sender, network.address);
    }
}

TEST(Relay, RepeatsTheFaultsOfASeedAndRecords)
{
    const std::string path = testing::TempDir() + "relayed-" + std::to_string(getpid());
    Lines sent;
    std::string words;
    for (int number = 1000; number < 1600; ++number) {
        sent.push_back(std::to_string(number));
        words += sent.back() + ' ';
    }
    const auto first = recordedExchange(sent, 7, path);
    auto recorded = contentOf(path);
    EXPECT_EQ((recorded[{Transport::stream, Direction::toServer}]), "opened u\0p closed "s);
    EXPECT_EQ((recorded[{Transport::stream, Direction::toClient}]), "down closed ");
    EXPECT_EQ((recorded[{Transport::datagrams, Direction::toServer}]), "opened " + words);
    EXPECT_EQ((recorded[{Transport::datagrams, Direction::toClient}]), words);
    EXPECT_EQ(std::set<Lines>({sent, first.first, first.second}).size(), 3U) << "faults each way, and others";
    EXPECT_EQ(recordedExchange(sent, 7, path), first);
    EXPECT_NE(recordedExchange(sent, 8, path), first);
    std::filesystem::remove(path);
}

TEST(RelayStreams, APausedPeerFillsABoundedBufferOnly)
{
    LocalNetwork network;
    StreamEnd &talker = network.connect(), &slowServer = network.accept();
    slowServer.paused = true;
    const std::string flood(32U << 20U, 'x');  // more than the kernel's own buffers and 256 KiB
    talker.send(flood);
    network.pass(2s);
    EXPECT_FALSE(talker.isSent());
    StreamEnd &client = network.connect(), &server = network.accept();
    client.send("hello");
    EXPECT_TRUE(network.await([&] { return server.received == "hello"; })) << "nobody else is stalled";
    slowServer.paused = false;
    EXPECT_TRUE(network.await([&] { return slowServer.received.size() == flood.size(); }));
}

TEST(RelayDatagrams, IdleStrangersGiveWayToAPlayer)
{
    LocalNetwork network;
    for (std::size_t i = 0; i < 2 * Relay::mostFlows; ++i) {
        network.addDatagrams().send("!", network.address);
        network.io.poll();
    }
    const auto descriptors = openDescriptors();
    DatagramEnd& player = network.addDatagrams();
    EXPECT_TRUE(network.await([&] {
        player.send("?", network.address);
        return newest(network.serverDatagrams) == "?";
    }));
    EXPECT_LT(openDescriptors(), descriptors) << "of the idle flows";
    const std::string line = "ignoring new senders of datagrams: 64 are active";
    EXPECT_EQ(std::count(network.log.begin(), network.log.end(), line), 1);
}

TEST(Relay, LogsALastingErrorOnce)
{
    LocalNetwork network({10'000});
    DatagramEnd& client = network.addDatagrams();
    for (std::size_t i = 0; i < Relay::mostLinks + 3; ++i) {
        network.connect();
        client.send(std::string(60'000, 'x'), network.address);
        network.poll();
    }
    for (const char* line :
         {"turning away connections: 64 are open", "datagrams 1: too many are under way, some are lost"}) {
        EXPECT_TRUE(network.awaitLog(line)) << line;
        EXPECT_EQ(std::count(network.log.begin(), network.log.end(), line), 1) << line;
    }
}

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
        EXPECT_TRUE(network.await([&] { return newest(network.serverDatagrams) == number; }));
    }
    const std::string line = "cannot take connections: Too many open files";
    const std::string flows = "ignoring new senders of datagrams: Too many open files";
    EXPECT_EQ(std::multiset<std::string>(network.log.begin(), network.log.end()),
              (std::multiset<std::string>{line, flows, "connection 1: opened", line, flows,
                                          "connection 2: opened"}));
}

TEST(Relay, CutsConnectionsAndFlowsAtTheirAge)
{
    RelayConfig config;
    config.cutAfter = 0.3;
    LocalNetwork network({}, config);
    StreamEnd &client = network.connect(), &server = network.accept();
    DatagramEnd& datagrams = network.addDatagrams();
    auto& received = network.serverDatagrams.received;
    const auto sendUntil = [&](const auto& condition) {
        return network.await([&] {
            datagrams.send("?", network.address);
            return condition();
        });
    };
    EXPECT_TRUE(sendUntil([&] { return received.size() > 3 && !client.end; }));
    EXPECT_TRUE(sendUntil([&] { return client.end && server.end && network.log.size() == 3; }));
    EXPECT_EQ(std::set<std::string>(network.log.begin(), network.log.end()),
              (std::set<std::string>{"connection 1: opened", "connection 1: cut", "datagrams 1: cut"}));
    received.clear();
    int tries = 0;
    EXPECT_TRUE(sendUntil([&tries] { return ++tries > 20; }));
    EXPECT_TRUE(received.empty());
}

// And delays both transports.
TEST(Relay, OutlivesAServerThatBreaksAndComesBack)
{
    LocalNetwork network({50});
    StreamEnd &client = network.connect(), &server = network.accept();
    StreamEnd &silent = network.connect(), &silentServer = network.accept();
    Time sent = Clock::now();
    client.send("hello");
    EXPECT_TRUE(network.await([&] { return server.received == "hello"; }));
    EXPECT_GE(Clock::now(), sent + 50ms);
    client.send("still under way when the server goes");
    network.pass(20ms);
    server.send("goodbye");
    server.reset();
    silentServer.reset();
    EXPECT_TRUE(network.awaitLog("connection 1: broken"));
    EXPECT_TRUE(network.awaitLog("connection 2: broken"));
    EXPECT_TRUE(network.await([&] { return client.end && silent.end; }));
    EXPECT_EQ(client.received, "goodbye");
    EXPECT_EQ(client.end, boost::asio::error::connection_reset);

    const std::uint16_t port = network.server.number();
    network.server.acceptor.close();
    network.serverDatagrams.socket.close();
    DatagramEnd& datagrams = network.addDatagrams();
    datagrams.send("?", network.address);
    StreamEnd& late = network.connect();
    EXPECT_TRUE(network.awaitLog("connection 3: cannot reach the server: Connection refused"));
    EXPECT_TRUE(network.await([&] { return late.end.failed(); }));
    network.pass(200ms);  // until the datagram is refused, too

    network.server = PortPair(network.io, port);
    DatagramEnd& back = network.add(std::move(network.server.udp));
    sent = Clock::now();
    datagrams.send("again", network.address);
    EXPECT_TRUE(network.await([&] { return bytesOf(back) == Lines{"again"}; }));
    EXPECT_GE(Clock::now(), sent + 50ms);
    network.relay.stop();
    network.io.restart();
    network.io.run_for(5s);
    EXPECT_TRUE(network.io.stopped()) << "no work is left";
}

TEST(Relay, RefusesItselfAsServerAndKeepsTheRecording)
{
    const std::string path = testing::TempDir() + "kept-" + std::to_string(getpid());
    RecordingWriter{path};
    const auto size = std::filesystem::file_size(path);
    boost::asio::io_context io;
    const std::uint16_t port = PortPair(io, 0).number();
    for (const char* host : {"127.0.0.1", "0.0.0.0", "::ffff:127.0.0.1"}) {
        RelayConfig config;
        config.port = port;
        config.serverHost = host;
        config.serverPort = std::to_string(port);
        config.recordPath = path;
        std::filesystem::resize_file(path, size + 1);
        EXPECT_THROW(Relay(io, config), std::runtime_error) << host;
        EXPECT_EQ(std::filesystem::file_size(path), size + 1);
    }
    std::filesystem::remove(path);
}
