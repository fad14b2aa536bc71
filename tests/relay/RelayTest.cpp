#include "tests/relay/LocalNetwork.h"

#include <numeric>
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

/// The numbers that arrive of 600 datagrams sent to the server through such a network.
std::vector<std::string> survivors(const Conditions& conditions, std::uint32_t seed)
{
    LocalNetwork network(with(conditions, seed));
    DatagramEnd server{network.server.udp};
    auto client = network.datagramSocket();
    for (int number = 0; number < 600; ++number) {
        client.send_to(boost::asio::buffer(std::to_string(number)), network.relayAddress());
        network.io.poll();
        server.poll();
    }
    network.await([] { return false; }, 400ms);
    server.poll();
    return server.heard;
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

TEST(Relay, SpoilsTheSameDatagramsAtTheAskedRateEveryTime)
{
    const Conditions conditions = {milliseconds(2), {}, 0.2, 0, 0.1};
    const std::vector<std::string> first = survivors(conditions, 7);
    EXPECT_EQ(survivors(conditions, 7), first);
    EXPECT_NE(survivors(conditions, 8), first);
    EXPECT_NEAR(static_cast<double>(first.size()), 480, 50);
}

TEST(Relay, DelaysBothTransports)
{
    LocalNetwork network(with({milliseconds(60), {}, 0, 0, 0}));
    StreamEnd client = network.connect(), server = network.accept();
    DatagramEnd datagrams{network.server.udp};
    auto socket = network.datagramSocket();
    const Time sent = Clock::now();
    client.send("soon");
    socket.send_to(boost::asio::buffer("soon", 4), network.relayAddress());
    bool isEarly = false;
    EXPECT_TRUE(network.await([&] {
        server.poll();
        datagrams.poll();
        const bool isSomethingHere = !server.heard.empty() || !datagrams.heard.empty();
        isEarly = isEarly || (isSomethingHere && Clock::now() < sent + 60ms);
        return server.heard == "soon" && datagrams.heard.size() == 1;
    }));
    EXPECT_FALSE(isEarly);
}

TEST(Relay, APeerThatDoesNotReadFillsABoundedBufferAndStallsNobodyElse)
{
    LocalNetwork network;
    StreamEnd silent = network.connect(), deafServer = network.accept();
    silent.socket.non_blocking(true);
    const std::string block(65536, 'x');
    std::size_t taken = 0;
    network.await(
        [&] {
            boost::system::error_code error;
            taken += silent.socket.write_some(boost::asio::buffer(block), error);
            return false;
        },
        2s);
    EXPECT_LT(taken, 32U << 20U);  // the kernel's own buffers on both sides, and 256 KiB
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

TEST(Relay, OutlivesAServerThatIsNotThereAndOneThatBreaksOff)
{
    LocalNetwork network;
    StreamEnd client = network.connect();
    StreamEnd server = network.accept();
    client.send("hello");
    EXPECT_TRUE(network.await([&server] {
        server.poll();
        return server.heard == "hello";
    }));
    server.socket.set_option(boost::asio::socket_base::linger(true, 0));
    server.socket.close();
    const auto hasEnded = [&client] {
        client.poll();
        return client.hasEnded;
    };
    EXPECT_TRUE(network.await(hasEnded));
    EXPECT_TRUE(network.await([&] { return network.hasLogged("connection 1: broken"); }));
    network.server.acceptor.close();
    network.server.udp.close();
    network.datagramSocket().send_to(boost::asio::buffer("?", 1), network.relayAddress());
    client = network.connect();
    EXPECT_TRUE(network.await(hasEnded));
    EXPECT_TRUE(network.await(
        [&] { return network.hasLogged("connection 2: cannot reach the server: Connection refused"); }));
}
