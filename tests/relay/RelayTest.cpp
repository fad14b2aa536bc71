#include "tests/relay/LocalNetwork.h"

#include <unistd.h>
#include <algorithm>
#include <filesystem>
#include <iterator>
#include <random>
#include <set>

using namespace relay;
using namespace std::chrono_literals;

namespace {

constexpr Conditions jittery = {milliseconds(20), milliseconds(20), 0, 0, 0};

std::string randomBytes(std::size_t size, unsigned seed)
{
    std::mt19937 engine(seed);
    std::string bytes(size, '\0');
    std::generate(bytes.begin(), bytes.end(), [&engine] { return static_cast<char>(engine()); });
    return bytes;
}

RelayConfig with(const Conditions& conditions, std::uint32_t seed = 1)
{
    RelayConfig config;
    config.conditions = conditions;
    config.seed = seed;
    return config;
}

using Heard = std::vector<std::string>;

/// What one end hears when the other one sends 600 datagrams.
template <class Send>
Heard survivors(LocalNetwork& network, DatagramEnd& hearer, const Send& send)
{
    for (int number = 1000; number < 1600; ++number) {
        send(std::to_string(number));
        network.io.poll();
        hearer.poll();
    }
    network.await([] { return false; }, 400ms);
    hearer.poll();
    return hearer.heard;
}

/// What survives to the server, and to the client, while a stream says a word each way and ends.
std::pair<Heard, Heard> recordedExchange(std::uint32_t seed, const std::string& path)
{
    RecordingWriter writer(path);
    RelayConfig config = with({milliseconds(2), {}, 0.2, 0.1, 0.1}, seed);
    config.recording = &writer;
    LocalNetwork network(config);
    StreamEnd streams[] = {network.connect(), network.accept()};
    streams[0].send(std::string("u\0p", 3));
    streams[1].send("down");
    auto socket = network.datagramSocket();
    DatagramEnd client{socket}, server{network.server.udp};
    const auto up = survivors(network, server, [&](const std::string& datagram) {
        socket.send_to(boost::asio::buffer(datagram), network.relayAddress());
    });
    const auto down = survivors(network, client, [&](const std::string& datagram) {
        server.socket.send_to(boost::asio::buffer(datagram), server.senders.front());
    });
    for (StreamEnd& stream : streams) {
        stream.socket.shutdown(boost::asio::ip::tcp::socket::shutdown_send);
    }
    EXPECT_TRUE(network.await([&] { return network.hasLogged("connection 1: closed"); }));
    return {up, down};
}

/// Of the stream to the server and to the client, then of the datagrams: what was opened, said and closed.
std::array<std::string, 4> contentOf(const std::string& path)
{
    std::array<std::string, 4> content;
    for (const Chunk& chunk : readRecording(path, {})) {
        const char* const words[] = {" ", "opened ", "closed "};
        EXPECT_EQ(chunk.lane.number, 1U);
        content[static_cast<unsigned>(chunk.lane.transport) * 2U +
                static_cast<unsigned>(chunk.lane.direction)] +=
            chunk.bytes + words[static_cast<unsigned>(chunk.kind)];
    }
    return content;
}

}  // namespace

TEST(Relay, StreamsArriveUnchangedInOrderBothWaysPerConnectionAndEndAfterTheirLastByte)
{
    for (const Conditions& conditions : {Conditions{}, jittery}) {
        LocalNetwork network(with(conditions));
        StreamEnd ends[] = {network.connect(), network.accept(), network.connect(), network.accept()};
        std::string said[4];
        for (unsigned i = 0; i < 4; ++i) {
            said[i] = randomBytes(60'000 + i, i);
            ends[i].send(said[i]);
        }
        ends[0].socket.shutdown(boost::asio::ip::tcp::socket::shutdown_send);  // the other way stays open
        EXPECT_TRUE(network.await([&] {
            std::for_each(std::begin(ends), std::end(ends), [](StreamEnd& end) { end.poll(); });
            return ends[1].hasEnded && ends[2].heard.size() + ends[3].heard.size() == 120'005 &&
                   ends[0].heard.size() == said[1].size();
        }));
        for (unsigned i = 0; i < 4; ++i) {
            EXPECT_TRUE(ends[i].heard == said[i ^ 1U]) << i;
            EXPECT_EQ(ends[i].hasEnded, i == 1) << i;
        }
    }
}

TEST(Relay, DatagramsArriveUnchangedAndAnswersReachTheirClientFromWhereItSent)
{
    LocalNetwork network(with(jittery));
    DatagramEnd server{network.server.udp};
    boost::asio::ip::udp::socket sockets[] = {network.datagramSocket(), network.datagramSocket()};
    const std::string sent[] = {randomBytes(60'000, 1), "", "one frame", randomBytes(2'000, 2)};
    for (unsigned i = 0; i < 4; ++i) {
        sockets[i / 2].send_to(boost::asio::buffer(sent[i]), network.relayAddress());
    }
    EXPECT_TRUE(network.await([&] {
        server.poll();
        return server.heard.size() == 4;
    }));
    const std::set<boost::asio::ip::udp::endpoint> addresses(server.senders.begin(), server.senders.end());
    EXPECT_EQ(addresses.size(), 2U) << "to the server each client has an address of its own";
    for (std::size_t i = 0; i < server.heard.size(); ++i) {
        network.server.udp.send_to(boost::asio::buffer("re: " + server.heard[i]), server.senders[i]);
    }
    for (unsigned i = 0; i < 2; ++i) {
        DatagramEnd client{sockets[i]};
        EXPECT_TRUE(network.await([&] {
            client.poll();
            return client.heard.size() == 2;
        }));
        EXPECT_EQ(client.heard, (std::vector<std::string>{"re: " + sent[2 * i], "re: " + sent[2 * i + 1]}));
        EXPECT_EQ(client.senders.front(), network.relayAddress());
    }
}

TEST(Relay, SpoilsEachDirectionTheSameWayEveryTimeAndRecordsWhatWasSent)
{
    const std::string path = testing::TempDir() + "relayed-" + std::to_string(getpid());
    const auto first = recordedExchange(7, path);
    std::string sent;
    for (int number = 1000; number < 1600; ++number) {
        sent += std::to_string(number) + ' ';
    }
    EXPECT_EQ(contentOf(path), (std::array<std::string, 4>{std::string("opened u\0p closed ", 18),
                                                           "down closed ", "opened " + sent, sent}));
    EXPECT_NE(first.first, first.second);
    for (const Heard& heard : {first.first, first.second}) {
        const std::set<std::string> arrived(heard.begin(), heard.end());
        EXPECT_NEAR(static_cast<double>(arrived.size()), 480, 50);
        EXPECT_NEAR(static_cast<double>(heard.size() - arrived.size()), 48, 30);
        EXPECT_FALSE(std::is_sorted(heard.begin(), heard.end()));
    }
    EXPECT_EQ(recordedExchange(7, path), first);
    EXPECT_NE(recordedExchange(8, path), first);
    std::filesystem::remove(path);
}

TEST(Relay, APeerThatDoesNotReadFillsABoundedBufferAndStallsNobodyElse)
{
    LocalNetwork network;
    StreamEnd silent = network.connect(), deafServer = network.accept();
    silent.socket.non_blocking(true);
    const std::string block(65536, 'x');
    constexpr std::size_t mostTaken = 16U << 20U;  // the kernel's own buffers on both sides, and 256 KiB
    std::size_t taken = 0;
    network.await(
        [&] {
            boost::system::error_code error;
            while (!error && taken < 2 * mostTaken) {
                taken += silent.socket.write_some(boost::asio::buffer(block), error);
            }
            return false;
        },
        2s);
    EXPECT_LT(taken, mostTaken);
    StreamEnd client = network.connect(), server = network.accept();
    client.send("hello");
    EXPECT_TRUE(network.await([&] {
        server.poll();
        return server.heard == "hello";
    }));
    EXPECT_TRUE(network.await([&] {
        deafServer.poll();
        return deafServer.heard.size() == taken;
    })) << "reading goes on once the peer reads";
}

TEST(Relay, StrangersThatFillTheTableOfFlowsGiveWayToAPlayer)
{
    LocalNetwork network;
    for (std::size_t i = 0; i < 2 * Relay::mostFlows; ++i) {
        network.datagramSocket().send_to(boost::asio::buffer("!", 1), network.relayAddress());
        network.io.poll();
    }
    DatagramEnd server{network.server.udp};
    auto player = network.datagramSocket();
    EXPECT_TRUE(network.await([&] {
        player.send_to(boost::asio::buffer("?", 1), network.relayAddress());
        server.poll();
        return !server.heard.empty() && server.heard.back() == "?";
    }));
    const std::string complaint = "ignoring new senders of datagrams: 64 are active";
    EXPECT_EQ(std::count(network.log.begin(), network.log.end(), complaint), 1) << "and says so once";
}

TEST(Relay, HangsUpOnBothSidesAndFallsSilentWhenTheLineIsCut)
{
    RelayConfig config;
    config.cutAfter = milliseconds(300);
    LocalNetwork network(config);
    StreamEnd client = network.connect(), server = network.accept();
    DatagramEnd datagrams{network.server.udp};
    auto socket = network.datagramSocket();
    const auto sendUntil = [&](const auto& condition) {
        return network.await([&] {
            socket.send_to(boost::asio::buffer("?", 1), network.relayAddress());
            client.poll();
            server.poll();
            datagrams.poll();
            return condition();
        });
    };
    EXPECT_TRUE(sendUntil([&] { return datagrams.heard.size() > 3 && !client.hasEnded; }));
    EXPECT_TRUE(sendUntil([&] { return client.hasEnded && server.hasEnded; }));
    EXPECT_TRUE(sendUntil([&] { return network.hasLogged("datagrams 1: cut"); }));
    EXPECT_TRUE(sendUntil([&] { return network.hasLogged("connection 1: cut"); }));
    datagrams.heard.clear();
    int tries = 0;
    EXPECT_TRUE(sendUntil([&tries] { return ++tries > 20; }));
    EXPECT_TRUE(datagrams.heard.empty());
}

// And delays both transports.
TEST(Relay, OutlivesAServerThatBreaksOffAfterAGoodbyeIsGoneAndComesBack)
{
    LocalNetwork network(with({milliseconds(50), {}, 0, 0, 0}));
    StreamEnd client = network.connect(), server = network.accept();
    Time sent = Clock::now();
    client.send("hello");
    EXPECT_TRUE(network.await([&server] {
        server.poll();
        return server.heard == "hello";
    }));
    EXPECT_GE(Clock::now(), sent + 50ms);
    client.send("still under way when the server goes");
    network.io.poll();
    server.send("goodbye");
    server.socket.set_option(boost::asio::socket_base::linger(true, 0));
    server.socket.close();
    const auto hasEnded = [&client] {
        client.poll();
        return client.hasEnded;
    };
    EXPECT_TRUE(network.await(hasEnded));
    EXPECT_EQ(client.heard, "goodbye");
    EXPECT_EQ(client.end, boost::asio::error::connection_reset);
    EXPECT_TRUE(network.await([&] { return network.hasLogged("connection 1: broken"); }));

    const std::uint16_t port = network.server.number();
    network.server.acceptor.close();
    network.server.udp.close();
    auto socket = network.datagramSocket();
    socket.send_to(boost::asio::buffer("?", 1), network.relayAddress());
    client = network.connect();
    EXPECT_TRUE(network.await(hasEnded));
    EXPECT_TRUE(network.await(
        [&] { return network.hasLogged("connection 2: cannot reach the server: Connection refused"); }));
    network.await([] { return false; }, 200ms);  // until the datagram is refused, too

    network.server = PortPair(network.io, port);
    DatagramEnd datagrams{network.server.udp};
    sent = Clock::now();
    socket.send_to(boost::asio::buffer("again", 5), network.relayAddress());
    EXPECT_TRUE(network.await([&datagrams] {
        datagrams.poll();
        return datagrams.heard == Heard{"again"};
    }));
    EXPECT_GE(Clock::now(), sent + 50ms);
}
