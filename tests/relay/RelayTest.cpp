#include "relay/Relay.h"
#include "tests/relay/Ends.h"

#include <sys/resource.h>
#include <unistd.h>
#include <filesystem>
#include <map>
#include <random>
#include <set>

using namespace relay;
using namespace std::chrono_literals;
using namespace std::string_literals;

namespace {

constexpr Conditions jittery = {20ms, 20ms, 0, 0, 0};

std::string randomBytes(std::size_t size, unsigned seed)
{
    std::mt19937 engine(seed);
    std::string bytes(size, '\0');
    std::generate(bytes.begin(), bytes.end(), [&engine] { return static_cast<char>(engine()); });
    return bytes;
}

/// A server's ports, a relay before them, and the ends of both sides.
class LocalNetwork : public Ends
{
public:
    explicit LocalNetwork(const Conditions& conditions = {}, RelayConfig config = {})
        : relay(io, complete(conditions, std::move(config)))
    {
        relay.start();
    }

    PortPair server{io, 0};
    DatagramEnd& serverDatagrams = add(std::move(server.udp));
    std::vector<std::string> log;
    Relay relay;

    StreamEnd& connect() { return Ends::connect(relay.port()); }
    /// The server's end of the connection made last.
    StreamEnd& accept()
    {
        boost::asio::ip::tcp::socket socket(io);
        boost::system::error_code error;
        server.acceptor.non_blocking(true);
        EXPECT_TRUE(await([&] {
            server.acceptor.accept(socket, error);
            return !error;
        }));
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

using Heard = std::vector<std::string>;

/// What survives of `sent` to the server, and to the client, while a stream says a word each way and ends.
std::pair<Heard, Heard> recordedExchange(const Heard& sent, std::uint32_t seed, const std::string& path)
{
    RecordingWriter writer(path);
    RelayConfig config;
    config.seed = seed;
    config.recording = &writer;
    LocalNetwork network({2ms, {}, 0.2, 0.1, 0.1}, config);
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
    sendAll(client, Ends::at(network.relay.port()));
    sendAll(server, server.senders.front());
    stream.endSpeech();
    serverStream.endSpeech();
    EXPECT_TRUE(network.awaitLog("connection 1: closed"));
    return {server.heard, client.heard};
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

TEST(Relay, StreamsArriveUnchangedInOrderBothWaysPerConnectionAndEndAfterTheirLastByte)
{
    LocalNetwork network(jittery);
    StreamEnd* const ends[] = {&network.connect(), &network.accept(), &network.connect(), &network.accept()};
    std::string said[4];
    for (unsigned i = 0; i < 4; ++i) {
        said[i] = randomBytes(60'000 + i, i);
        ends[i]->send(said[i]);
    }
    ends[0]->endSpeech();  // the other way stays open
    EXPECT_TRUE(network.await([&] {
        unsigned whole = 0;
        for (unsigned i = 0; i < 4; ++i) {
            whole += ends[i]->heard == said[i ^ 1U] ? 1U : 0U;
        }
        return whole == 4 && ends[1]->end;
    }));
    EXPECT_FALSE(ends[0]->end || ends[2]->end || ends[3]->end);
}

TEST(Relay, DatagramsArriveUnchangedAndAnswersReachTheirClientFromWhereItSent)
{
    LocalNetwork network(jittery);
    const DatagramEnd::Address relayAddress = Ends::at(network.relay.port());
    DatagramEnd& server = network.serverDatagrams;
    DatagramEnd* const clients[] = {&network.addDatagrams(), &network.addDatagrams()};
    const std::string sent[] = {randomBytes(60'000, 1), "", "one frame", randomBytes(2'000, 2)};
    for (unsigned i = 0; i < 4; ++i) {
        clients[i / 2]->send(sent[i], relayAddress);
    }
    EXPECT_TRUE(network.await([&] { return server.heard.size() == 4; }));
    const std::set<DatagramEnd::Address> addresses(server.senders.begin(), server.senders.end());
    EXPECT_EQ(addresses.size(), 2U) << "to the server each client has an address of its own";
    for (std::size_t i = 0; i < server.heard.size(); ++i) {
        server.send("re: " + server.heard[i], server.senders[i]);
    }
    for (unsigned i = 0; i < 2; ++i) {
        EXPECT_TRUE(network.await([&] { return clients[i]->heard.size() == 2; }));
        EXPECT_EQ(clients[i]->heard, (Heard{"re: " + sent[2 * i], "re: " + sent[2 * i + 1]}));
        EXPECT_EQ(clients[i]->senders.front(), relayAddress);
    }
}

TEST(Relay, SpoilsEachDirectionTheSameWayEveryTimeAndRecordsWhatWasSent)
{
    const std::string path = testing::TempDir() + "relayed-" + std::to_string(getpid());
    Heard sent;
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
    EXPECT_EQ(std::set<Heard>({sent, first.first, first.second}).size(), 3U) << "faults each way, and others";
    EXPECT_EQ(recordedExchange(sent, 7, path), first);
    EXPECT_NE(recordedExchange(sent, 8, path), first);
    std::filesystem::remove(path);
}

TEST(Relay, APeerThatDoesNotReadFillsABoundedBufferAndStallsNobodyElse)
{
    LocalNetwork network;
    StreamEnd &talker = network.connect(), &deafServer = network.accept();
    deafServer.isDeaf = true;
    const std::string flood(32U << 20U, 'x');  // more than the kernel's own buffers and 256 KiB
    bool isTaken = false;
    boost::asio::async_write(talker.socket, boost::asio::buffer(flood), [&](auto...) { isTaken = true; });
    network.pass(2s);
    EXPECT_FALSE(isTaken);
    StreamEnd &client = network.connect(), &server = network.accept();
    client.send("hello");
    EXPECT_TRUE(network.await([&] { return server.heard == "hello"; }));
    deafServer.isDeaf = false;
    EXPECT_TRUE(network.await([&] { return deafServer.heard == flood; }))
        << "reading goes on once the peer reads";
}

TEST(Relay, StrangersThatFillTheTableOfFlowsGiveWayToAPlayer)
{
    LocalNetwork network;
    const DatagramEnd::Address relayAddress = Ends::at(network.relay.port());
    for (std::size_t i = 0; i < 2 * Relay::mostFlows; ++i) {
        network.addDatagrams().send("!", relayAddress);
        network.io.poll();
    }
    const Heard& heard = network.serverDatagrams.heard;
    DatagramEnd& player = network.addDatagrams();
    EXPECT_TRUE(network.await([&] {
        player.send("?", relayAddress);
        return !heard.empty() && heard.back() == "?";
    }));
    const std::string complaint = "ignoring new senders of datagrams: 64 are active";
    EXPECT_EQ(std::count(network.log.begin(), network.log.end(), complaint), 1) << "and says so once";
}

TEST(Relay, ComplainsOnceOfATroubleThatLasts)
{
    LocalNetwork network({10s, {}, 0, 0, 0});
    DatagramEnd& client = network.addDatagrams();
    for (std::size_t i = 0; i < Relay::mostLinks + 3; ++i) {
        network.connect();
        client.send(std::string(60'000, 'x'), Ends::at(network.relay.port()));
        network.poll();
    }
    for (const char* complaint :
         {"turning away connections: 64 are open", "datagrams 1: too many are under way, some are lost"}) {
        EXPECT_TRUE(network.awaitLog(complaint)) << complaint;
        EXPECT_EQ(std::count(network.log.begin(), network.log.end(), complaint), 1) << complaint;
    }
}

TEST(Relay, SaysOnceThatItIsOutOfDescriptorsEachTimeThatItIs)
{
    LocalNetwork network;
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    for (const char* number : {"1", "2"}) {
        network.connect();
        const int firstFree = dup(0);
        close(firstFree);
        const rlimit none{static_cast<rlim_t>(firstFree), limit.rlim_max};
        setrlimit(RLIMIT_NOFILE, &none);
        network.pass(700ms);  // for some more tries
        setrlimit(RLIMIT_NOFILE, &limit);
        EXPECT_TRUE(network.awaitLog("connection "s + number + ": opened"));
    }
    const std::string complaint = "cannot take connections: Too many open files";
    EXPECT_EQ(network.log, (Heard{complaint, "connection 1: opened", complaint, "connection 2: opened"}));
}

TEST(Relay, HangsUpOnBothSidesAndFallsSilentWhenTheLineIsCut)
{
    RelayConfig config;
    config.cutAfter = 300ms;
    LocalNetwork network({}, config);
    StreamEnd &client = network.connect(), &server = network.accept();
    DatagramEnd& datagrams = network.addDatagrams();
    Heard& heard = network.serverDatagrams.heard;
    const auto sendUntil = [&](const auto& condition) {
        return network.await([&] {
            datagrams.send("?", Ends::at(network.relay.port()));
            return condition();
        });
    };
    EXPECT_TRUE(sendUntil([&] { return heard.size() > 3 && !client.end; }));
    EXPECT_TRUE(sendUntil([&] { return client.end && server.end && network.log.size() == 3; }));
    EXPECT_EQ(std::set<std::string>(network.log.begin(), network.log.end()),
              (std::set<std::string>{"connection 1: opened", "connection 1: cut", "datagrams 1: cut"}));
    heard.clear();
    int tries = 0;
    EXPECT_TRUE(sendUntil([&tries] { return ++tries > 20; }));
    EXPECT_TRUE(heard.empty());
}

// And delays both transports.
TEST(Relay, OutlivesAServerThatBreaksOffAfterAGoodbyeIsGoneAndComesBack)
{
    LocalNetwork network({50ms, {}, 0, 0, 0});
    StreamEnd &client = network.connect(), &server = network.accept();
    StreamEnd &silent = network.connect(), &silentServer = network.accept();
    Time sent = Clock::now();
    client.send("hello");
    EXPECT_TRUE(network.await([&] { return server.heard == "hello"; }));
    EXPECT_GE(Clock::now(), sent + 50ms);
    client.send("still under way when the server goes");
    network.pass(20ms);
    server.send("goodbye");
    for (StreamEnd* end : {&server, &silentServer}) {
        end->socket.set_option(boost::asio::socket_base::linger(true, 0));
        end->socket.close();
    }
    EXPECT_TRUE(network.awaitLog("connection 1: broken"));
    EXPECT_TRUE(network.awaitLog("connection 2: broken"));
    EXPECT_TRUE(network.await([&] { return client.end && silent.end; }));
    EXPECT_EQ(client.heard, "goodbye");
    EXPECT_EQ(client.end, boost::asio::error::connection_reset);

    const std::uint16_t port = network.server.number();
    network.server.acceptor.close();
    network.serverDatagrams.socket.close();
    DatagramEnd& datagrams = network.addDatagrams();
    datagrams.send("?", Ends::at(network.relay.port()));
    StreamEnd& late = network.connect();
    EXPECT_TRUE(network.awaitLog("connection 3: cannot reach the server: Connection refused"));
    EXPECT_TRUE(network.await([&] { return late.end.failed(); }));
    network.pass(200ms);  // until the datagram is refused, too

    network.server = PortPair(network.io, port);
    DatagramEnd& back = network.add(std::move(network.server.udp));
    sent = Clock::now();
    datagrams.send("again", Ends::at(network.relay.port()));
    EXPECT_TRUE(network.await([&] { return back.heard == Heard{"again"}; }));
    EXPECT_GE(Clock::now(), sent + 50ms);
}
