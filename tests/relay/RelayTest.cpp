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

constexpr Conditions lossy = {2, 0, 20, 10, 10};

/// What arrives of the sorted datagrams of a flow.
Lines survivors(const Lines& sent, std::uint32_t seed, Direction direction)
{
    Impairment impairment(lossy, seed, {Transport::datagrams, 1, direction});
    Lines arriving;
    for (const std::string& datagram : sent) {
        arriving.insert(arriving.end(), impairment.next().copies, datagram);
    }
    return arriving;
}

}  // namespace

// Two at once; one is half closed by the client, the other by the server. Twice, for what stays behind.
TEST(RelayStreams, ArriveWholeAndInOrderPerConnection)
{
    LocalNetwork network({20, 20});
    const auto descriptors = openDescriptors();
    for (int round = 0; round < 2; ++round) {
        StreamEnd &client = network.connect(), &server = network.accept();
        StreamEnd &client2 = network.connect(), &server2 = network.accept();
        const std::pair<StreamEnd&, StreamEnd&> ways[] = {
            {client, server}, {server2, client2}, {server, client}, {client2, server2}};
        std::string sent[4];
        for (unsigned i = 0; i < 4; ++i) {
            sent[i] = randomBytes(60'000 + i, i);
            ways[i].first.send(sent[i]);
        }
        client.finishSending();
        server2.finishSending();
        EXPECT_TRUE(network.await([&] { return server.end && client2.end; }));
        for (const unsigned i : {2U, 3U}) {
            EXPECT_FALSE(ways[i].second.end) << "the other direction stays open";
            ways[i].first.send("more");
            ways[i].first.finishSending();
            sent[i] += "more";
        }
        EXPECT_TRUE(network.await([&] { return client.end && server2.end; }));
        for (unsigned i = 0; i < 4; ++i) {
            EXPECT_EQ(ways[i].second.end, boost::asio::error::eof);
            EXPECT_TRUE(ways[i].second.received == sent[i]) << "the end comes behind the last byte";
            ways[i].second.close();
        }
        EXPECT_TRUE(network.awaitLog("connection " + std::to_string(2 * round + 1) + ": closed"));
        EXPECT_TRUE(network.awaitLog("connection " + std::to_string(2 * round + 2) + ": closed"));
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

TEST(Relay, SpoilsAsTheSeedSaysAndRecordsWhatWasSent)
{
    RelayConfig config;
    config.seed = 7;
    config.recordPath = testing::TempDir() + "relayed-" + std::to_string(getpid());
    Lines sent;
    std::string words;
    for (int number = 100; number < 300; ++number) {  // more could overflow a socket's buffer at once
        sent.push_back(std::to_string(number));
        words += sent.back() + ' ';
    }
    LocalNetwork network(lossy, config);
    StreamEnd &stream = network.connect(), &serverStream = network.accept();
    stream.send("u\0p"s);
    serverStream.send("down");
    DatagramEnd &client = network.addDatagrams(), &server = network.serverDatagrams;
    const auto sendAll = [&](DatagramEnd& sender, const DatagramEnd::Address& to) {
        for (const std::string& datagram : sent) {
            sender.send(datagram, to);
            network.poll();
        }
    };
    const auto arrive = [&](const DatagramEnd& end, Direction direction) {
        const Lines expected = survivors(sent, config.seed, direction);
        EXPECT_TRUE(network.await([&] { return end.received.size() >= expected.size(); }));
        Lines arrived = bytesOf(end);
        std::sort(arrived.begin(), arrived.end());
        EXPECT_EQ(arrived, expected);
    };
    sendAll(client, network.address);
    arrive(server, Direction::toServer);
    sendAll(server, server.received.front().sender);
    arrive(client, Direction::toClient);
    stream.finishSending();
    serverStream.finishSending();
    EXPECT_TRUE(network.awaitLog("connection 1: closed"));

    std::map<std::pair<Transport, Direction>, std::string> recorded;
    for (const Chunk& chunk : readRecording(config.recordPath, {})) {
        const std::array kinds = {" ", "opened ", "closed "};
        recorded[{Transport(chunk.transport()), Direction(chunk.direction())}] +=
            chunk.bytes() + kinds.at(static_cast<std::size_t>(chunk.kind()));
    }
    EXPECT_EQ((recorded[{Transport::stream, Direction::toServer}]), "opened u\0p closed "s);
    EXPECT_EQ((recorded[{Transport::stream, Direction::toClient}]), "down closed ");
    EXPECT_EQ((recorded[{Transport::datagrams, Direction::toServer}]), "opened " + words);
    EXPECT_EQ((recorded[{Transport::datagrams, Direction::toClient}]), words);
    std::filesystem::remove(config.recordPath);
}

TEST(RelayStreams, APausedPeerFillsABoundedBufferOnly)
{
    LocalNetwork network;
    StreamEnd &talker = network.connect(), &slowServer = network.accept();
    slowServer.paused = true;
    std::string flood;
    while (flood.size() < 24U << 20U) {  // more than the kernel's own buffers and 256 KiB
        flood += randomBytes(60'001, 1);
    }
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

TEST(RelayDatagrams, IdleStrangersGiveWayToAPlayer)
{
    LocalNetwork network;
    DatagramEnd &early = network.addDatagrams(), &late = network.addDatagrams();
    early.send("first", network.address);
    EXPECT_TRUE(network.await([&] { return newest(network.serverDatagrams) == "first"; }));
    const auto address = network.serverDatagrams.received.back().sender;
    for (std::size_t i = 0; i < 2 * Relay::mostFlows; ++i) {
        network.addDatagrams().send("!", network.address);
        network.io.poll();
    }
    const auto descriptors = openDescriptors();
    EXPECT_TRUE(network.await([&] {
        early.send(".", network.address);
        late.send("?", network.address);
        return newest(network.serverDatagrams) == "?";
    }));
    EXPECT_LT(openDescriptors(), descriptors) << "of the idle flows";
    early.send("last", network.address);
    EXPECT_TRUE(network.await([&] { return newest(network.serverDatagrams) == "last"; }));
    EXPECT_EQ(network.serverDatagrams.received.back().sender, address) << "who sends keeps the flow";
    const std::string line = "ignoring new senders of datagrams: 64 are active";
    EXPECT_EQ(std::count(network.log.begin(), network.log.end(), line), 1);
}

TEST(RelayDatagrams, AnOverflowIsLoggedOnce)
{
    LocalNetwork network({10'000});
    DatagramEnd& client = network.addDatagrams();
    for (int i = 0; i < 50; ++i) {
        client.send(std::string(60'000, 'x'), network.address);
        network.poll();
    }
    EXPECT_EQ(network.log, Lines{"datagrams 1: too many are under way, some are lost"});
}

TEST(RelayStreams, TooManyAreTurnedAwayUntilOthersEnd)
{
    LocalNetwork network;
    const std::string line = "turning away connections: 64 are open";
    for (const int times : {1, 2}) {
        std::vector<StreamEnd*> clients;
        for (std::size_t i = 0; i < Relay::mostLinks + 3; ++i) {
            clients.push_back(&network.connect());
            network.poll();
        }
        EXPECT_TRUE(network.await([&] { return clients.back()->end.failed(); }));
        EXPECT_EQ(std::count(network.log.begin(), network.log.end(), line), times) << "once each time";
        const auto reset = [](StreamEnd* client) { client->reset(); };
        std::for_each(clients.begin(), clients.end(), reset);
        EXPECT_TRUE(network.awaitLog("connection " + std::to_string(times * 64) + ": broken"));
        network.pass(100ms);  // for the others
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
        EXPECT_TRUE(network.await([&] { return newest(network.serverDatagrams) == number; }));
    }
    const std::string line = "cannot take connections: Too many open files";
    const std::string flows = "ignoring new senders of datagrams: Too many open files";
    EXPECT_EQ(std::multiset<std::string>(network.log.begin(), network.log.end()),
              (std::multiset<std::string>{line, flows, "connection 1: opened", line, flows,
                                          "connection 2: opened"}));
}
#endif

TEST(Relay, CutsConnectionsAndFlowsAtTheirAge)
{
    RelayConfig config;
    config.cutAfter = 0.3;
    LocalNetwork network({}, config);
    StreamEnd &client = network.connect(), &server = network.accept();
    DatagramEnd &datagrams = network.addDatagrams(), &second = network.addDatagrams();
    auto& received = network.serverDatagrams.received;
    const auto sendUntil = [&](const auto& condition) {
        return network.await([&] {
            datagrams.send("?", network.address);
            second.send("?", network.address);
            return condition();
        });
    };
    EXPECT_TRUE(sendUntil([&] { return received.size() > 3 && !client.end; }));
    EXPECT_TRUE(sendUntil([&] { return client.end && server.end && network.log.size() == 4; }));
    EXPECT_EQ(std::set<std::string>(network.log.begin(), network.log.end()),
              (std::set<std::string>{"connection 1: opened", "connection 1: cut", "datagrams 1: cut",
                                     "datagrams 2: cut"}));
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
    network.pass(200ms);  // until the datagram is refused, too, which nobody needs to know
    EXPECT_EQ(network.log.back(), "connection 3: cannot reach the server: Connection refused");

    network.server = PortPair(network.io, port);
    DatagramEnd& back = network.add(std::move(network.server.udp));
    sent = Clock::now();
    datagrams.send("again", network.address);
    EXPECT_TRUE(network.await([&] { return bytesOf(back) == Lines{"again"}; }));
    EXPECT_GE(Clock::now(), sent + 50ms);
    network.connect();
    EXPECT_TRUE(network.awaitLog("connection 4: opened"));
    network.relay.stop();
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
        EXPECT_EQ(std::filesystem::file_size(config.recordPath), 5U);
    }
    std::filesystem::remove(config.recordPath);
}
