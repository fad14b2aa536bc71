#include "peer/Endpoints.h"
#include "relay/Relay.h"

#include <gtest/gtest.h>

#include <unistd.h>
#include <filesystem>
#include <random>
#include <set>
#include <tuple>

using namespace relay;
using namespace std::chrono_literals;
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

/// A server's ports, a relay in front of them, and the ends of both sides.
class LocalNetwork : public peer::Endpoints
{
public:
    explicit LocalNetwork(const Conditions& conditions = {}, RelayConfig base = {}) : config(std::move(base))
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
    LocalNetwork network({20, 20, 20, 10}, config);
    std::map<std::tuple<int, std::uint32_t, int>, std::string> sent, recorded;
    const auto pass = [&](DatagramEnd& from, const DatagramEnd::Address& to, DatagramEnd& end,
                          const Flow& flow) {
        Impairment impairment(network.config.conditions, config.seed, flow);
        std::vector<std::string> expected, arrived;
        end.received.clear();
        for (std::size_t i = 0; i < 150; ++i) {  // more could overflow a socket's buffer at once
            const std::string bytes = randomBytes(i == 9 ? 60'000 : i % 9);
            expected.insert(expected.end(), impairment.next().copies, bytes);
            from.send(bytes, to);
            network.poll();
            sent[{1, flow.number, int(flow.direction)}] += bytes;
        }
        EXPECT_TRUE(network.await([&] { return end.received.size() >= expected.size(); }));
        for (const peer::Datagram& datagram : end.received) {
            arrived.push_back(datagram.bytes);
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
    config = network.config;
    config.port = PortPair(network.io, 0).number();
    config.serverPort = std::to_string(config.port);
    EXPECT_THROW(Relay(network.io, config), std::runtime_error) << "it cannot be its own server";
    for (const Chunk& chunk : readRecording(config.recordPath, {})) {
        recorded[{chunk.transport(), chunk.number(), chunk.direction()}] +=
            chunk.kind() == Chunk::BYTES ? chunk.bytes() : Chunk::Kind_Name(chunk.kind());
    }
    EXPECT_TRUE(recorded == sent) << "or the relay that failed has replaced the recording";
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
    EXPECT_TRUE(network.await([&] { return slowServer.received == flood; }));
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
    const auto full = Clock::now();
    EXPECT_TRUE(network.await([&] {
        early.send("still", network.address);
        if (Clock::now() > full + Relay::idleLimit) {
            late.send("new", network.address);
        }
        return network.serverDatagrams.received.back().bytes == "new";
    }));
    EXPECT_LT(openDescriptors(), descriptors) << "of the idle flows";
    early.send("last", network.address);
    EXPECT_TRUE(network.serverReceives("last"));
    EXPECT_EQ(network.serverDatagrams.received.back().sender, address) << "who sends keeps the flow";
    EXPECT_EQ(network.log, Lines{"ignoring new senders of datagrams: 64 are active"});
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
        for (StreamEnd* const client : clients) {
            client->reset();
        }
        EXPECT_TRUE(network.await([&] { return openDescriptors() == descriptors; }));
    }
}

TEST(Relay, CutsConnectionsAndFlowsAtTheirAge)
{
    const std::pair<Cut, const char*> cases[] = {{Cut::close, "End of file"},
                                                 {Cut::reset, "Connection reset by peer"},
                                                 {Cut::half, "halfEnd of file"}};
    RelayConfig config;
    config.cutAfter = 0.3;
    for (const auto& [how, end] : cases) {
        config.cut = how;
        LocalNetwork network({}, config);
        const Time opened = Clock::now();
        StreamEnd &client = network.connect(), &server = network.accept();
        DatagramEnd& datagrams = network.addDatagrams();
        const auto isCut = [&] {
            datagrams.send("?", network.address);
            return network.log.count("datagrams 1: cut") > 0;
        };
        EXPECT_TRUE(network.await(isCut));
        EXPECT_GE(Clock::now(), opened + 300ms);
        network.pass(50ms);
        server.send("halfHALF");
        EXPECT_TRUE(network.await([&] { return client.end && server.end; }));
        EXPECT_EQ(network.log, (Lines{"connection 1: opened", "connection 1: cut", "datagrams 1: cut"}));
        EXPECT_EQ(client.received + client.end.message(), end);
    }
}

TEST(Relay, OutlivesAServerThatBreaksAndComesBack)
{
    LocalNetwork network({50});
    StreamEnd &client = network.connect(), &server = network.accept();
    const Time sent = Clock::now();
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
    network.pass(200ms);  // until the datagram is refused, too, which needs no report

    network.server = PortPair(network.io, port);
    network.serverDatagrams.socket = std::move(network.server.udp);
    datagrams.send("again", network.address);
    EXPECT_TRUE(network.serverReceives("again"));
    network.serverDatagrams.send("answer", network.serverDatagrams.received.back().sender);
    EXPECT_TRUE(network.await([&] { return !datagrams.received.empty(); }));
    network.connect();
    network.accept();
    EXPECT_EQ(network.log,
              (Lines{"connection 1: opened", "connection 1: broken", "connection 2: opened",
                     "connection 2: cannot reach the server: Connection refused", "connection 3: opened"}));
    network.relay->stop();
    network.io.restart();
    network.io.run_for(5s);
    EXPECT_TRUE(network.io.stopped()) << "no work is left";
}
