#include "network/PacketReceiver.h"
#include "network/Timer.h"
#include "peer/Endpoints.h"
#include "relay/Replay.h"
#include "scene/General.h"
#include "scene/Player.h"
#include "scene/SceneGraph.h"
#include "scene/SceneObjectFactory.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <map>
#include <sstream>

using namespace relay;
using namespace std::chrono_literals;
using boost::asio::ip::tcp;
using peer::loopback;

namespace {

const std::string recordings = VANTOR_RECORDINGS;

ServerTrack shortMatch()
{
    return readServerTrack(recordings + "/short-match.rec", {});
}

/// What a datagram of the client starts with.
std::string bytesOf(std::uint16_t qport)
{
    return {static_cast<char>(qport & 0xFFU), static_cast<char>(qport >> 8U)};
}

/// The client's own receiver and scene, without a window.
class Spectator : public PacketReceiver
{
public:
    explicit Spectator(boost::asio::io_context& io)
        : PacketReceiver(&io, nullptr, SceneGraph::getInstance(), 3600)  // an hour: no watchdog in here
    {
    }

    bool dispatchClosedConnection(tcp::socket*) override { return hasEnded = true; }

    bool hasEnded = false;
};

/// The scores, and a line for each ship and shot. Explosions are left out: they last for a time of the
/// client's own clock.
std::string describeScene()
{
    std::map<unsigned long long, const Transform*> objects;
    for (const Transform* object : SceneGraph::getInstance()->children) {
        if (object->type == SGT_PLAYER || object->type == SGT_PROJECTILE) {
            objects[object->id] = object;
        }
    }
    const General& scores = *General::getInstance();
    std::ostringstream text;
    text.precision(9);  // enough for every bit of a float
    text << "red " << scores.redTeamScore << " blue " << scores.blueTeamScore << '\n';
    for (const auto& [id, object] : objects) {
        const Vector3& at = object->serverPosition[0];
        text << id << " type " << object->type << " at " << at.x << ' ' << at.y << ' ' << at.z;
        if (const auto* ship = dynamic_cast<const Player*>(object)) {
            text << ' ' << (ship->blueTeam ? "blue " : "red ") << ship->name << " health " << ship->health
                 << " score " << ship->score;
        }
        text << '\n';
    }
    return text.str();
}

}  // namespace

TEST(Replay, EndsInTheSameScene)
{
    delete std::exchange(SceneGraph::instance, nullptr);
    delete std::exchange(General::instance, nullptr);
    SceneObjectFactory::getInstance()->init(0);
    Timer::isSynced = false;
    peer::Endpoints ends;
    Replayer replayer(ends.io, 0, shortMatch(), 20, [](const std::string&) {});
    replayer.start();
    Spectator spectator(ends.io);
    tcp::socket connection = peer::connectTo(ends.io, replayer.port());
    spectator.Socket(&connection);
    EXPECT_TRUE(ends.await([&] {
        spectator.dispatchPackets();
        SceneGraph::getInstance()->applyRemoveList();
        if (!spectator.hasEnded) {
            const std::string steering = bytesOf(shortMatch().qport);
            spectator.getUDPSocket()->send_to(boost::asio::buffer(steering), loopback(replayer.port()));
        }
        return spectator.hasEnded && ends.io.poll() == 0;
    }));
    std::ifstream file(recordings + "/short-match.txt");
    EXPECT_EQ(describeScene(), std::string(std::istreambuf_iterator<char>(file), {}));
}

// Twice: the second client gets the same, from the start.
TEST(Replay, KeepsTheTimesAndWaitsForTheRightQport)
{
    const ServerTrack track = shortMatch();
    std::string expected;
    Duration first{0};
    for (const Chunk& chunk : track.chunks) {
        const bool isStream = chunk.flow.transport == Transport::stream;
        first = isStream || first.count() > 0 ? first : chunk.at;
        expected += isStream ? "" : chunk.bytes;
    }
    peer::Endpoints ends;
    std::vector<std::string> log;
    Replayer replayer(ends.io, 0, track, 20, [&log](const std::string& line) { log.push_back(line); });
    replayer.start();
    const auto server = loopback(replayer.port());
    for (int round = 0; round < 2; ++round) {
        peer::StreamEnd& stream = ends.connect(replayer.port());
        peer::DatagramEnd &player = ends.addDatagrams(), &stranger = ends.addDatagrams();
        for (const std::string& wrong :
             {std::string(), bytesOf(track.qport).substr(0, 1), bytesOf(track.qport ^ 0xFF00U)}) {
            stranger.send(wrong, server);
        }
        ends.pass(first / 20 + 200ms);
        EXPECT_TRUE(player.received.empty());
        const Time answered = Clock::now();
        player.send(bytesOf(track.qport), server);
        peer::StreamEnd &second = ends.connect(replayer.port()), &third = ends.connect(replayer.port());
        EXPECT_TRUE(ends.await([&] { return second.end && third.end; }));
        EXPECT_FALSE(stream.end) << "others are turned away while the first one watches";
        stranger.send(bytesOf(track.qport), server);
        EXPECT_TRUE(ends.await([&] { return stream.end == boost::asio::error::eof; }));
        const auto rest = (track.chunks.back().at - first) / 20;
        EXPECT_GT(Clock::now() - answered, rest - 10ms);  // it noticed a little late that it had to wait
        EXPECT_LT(Clock::now() - answered, rest + 5s);
        std::string received;
        for (const peer::Datagram& datagram : player.received) {
            received += datagram.bytes;
        }
        EXPECT_TRUE(received == expected) << "nothing is left out";
        EXPECT_TRUE(stranger.received.empty());
    }
    ends.connect(replayer.port()).reset();
    EXPECT_TRUE(ends.await([&] { return log.back() == "client 3: left"; }));
    const std::string turnedAway = "turning away clients: another one is watching";
    EXPECT_EQ(log, (std::vector<std::string>{"client 1: connected", turnedAway, "client 1: played to the end",
                                             "client 2: connected", turnedAway, "client 2: played to the end",
                                             "client 3: connected", "client 3: left"}));
    ends.connect(replayer.port());
    EXPECT_TRUE(ends.await([&] { return log.back() == "client 4: connected"; }));
    replayer.stop();
    ends.io.restart();
    ends.io.run_for(5s);
    EXPECT_TRUE(ends.io.stopped()) << "no work is left";
}
