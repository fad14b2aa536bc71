#include "network/PacketReceiver.h"
#include "network/Timer.h"
#include "relay/Replayer.h"
#include "scene/General.h"
#include "scene/Player.h"
#include "scene/SceneGraph.h"
#include "scene/SceneObjectFactory.h"
#include "tests/relay/Ends.h"

#include <fstream>
#include <iterator>
#include <map>
#include <sstream>

using namespace relay;
using namespace std::chrono_literals;
using boost::asio::ip::tcp;

namespace {

const std::string recordings = VANTOR_RECORDINGS;

ServerTrack shortMatch()
{
    return serverSide(readRecording(recordings + "/short-match.rec", {}));
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

void startAnew()
{
    delete std::exchange(SceneGraph::instance, nullptr);
    delete std::exchange(General::instance, nullptr);
    SceneObjectFactory::getInstance()->init(0);
    Timer::isSynced = false;
}

/// The scores, and a line for each ship and shot. Explosions are left out: they are the client's own, and
/// last for a time of its clock.
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

TEST(Replay, EndsInTheSameSceneEveryTimeAndAtAnySpeed)
{
    std::ifstream file(recordings + "/short-match.txt");
    const std::string expected((std::istreambuf_iterator<char>(file)), {});
    for (const double speed : {4.0, 20.0}) {
        startAnew();
        boost::asio::io_context io;
        std::string said;
        Replayer replayer(io, 0, shortMatch(), speed, [&said](const std::string& line) { said = line; });
        replayer.start();
        Spectator spectator(io);
        tcp::socket connection(io);
        connection.connect({boost::asio::ip::address_v4::loopback(), replayer.port()});
        spectator.Socket(&connection);
        const std::string steering = bytesOf(shortMatch().qport);
        EXPECT_TRUE(peer::eventually(
            [&] {
                const bool isQuiet = io.poll() == 0;
                spectator.dispatchPackets();
                SceneGraph::getInstance()->applyRemoveList();
                if (!spectator.hasEnded) {
                    spectator.getUDPSocket()->send_to(boost::asio::buffer(steering),
                                                      Ends::at(replayer.port()));
                }
                return spectator.hasEnded && isQuiet;
            },
            30s));
        EXPECT_EQ(describeScene(), expected) << "at speed " << speed;
        EXPECT_EQ(said, "client 1: played to the end");
    }
}

TEST(Replay, KeepsTheRecordedTimesAndWaitsWithDatagramsForAClientWithTheRightQport)
{
    const ServerTrack script = shortMatch();
    std::vector<std::string> datagrams;
    Duration first{0};
    for (const ServerTrack::Line& line : script.lines) {
        if (line.transport == Transport::datagrams) {
            first = datagrams.empty() ? line.at : first;
            datagrams.push_back(line.bytes);
        }
    }
    Ends ends;
    Replayer replayer(ends.io, 0, script, 20, [](const std::string&) {});
    replayer.start();
    StreamEnd& stream = ends.connect(replayer.port());
    DatagramEnd &player = ends.addDatagrams(), &stranger = ends.addDatagrams();
    for (const std::string& wrong : {std::string(), bytesOf(script.qport ^ 0xFF00U)}) {
        stranger.send(wrong, Ends::at(replayer.port()));
    }
    ends.pass(first / 20 + 200ms);
    EXPECT_EQ(stranger.heard.size() + player.heard.size(), 0U);

    const Time answered = Clock::now();
    player.send(bytesOf(script.qport), Ends::at(replayer.port()));
    StreamEnd& second = ends.connect(replayer.port());
    EXPECT_TRUE(ends.await([&] { return second.end == boost::asio::error::eof; }));
    EXPECT_FALSE(stream.end) << "the second is turned away while the first one watches";
    EXPECT_TRUE(ends.await([&] { return stream.end == boost::asio::error::eof; }));
    const auto took = Clock::now() - answered;
    const auto rest = (script.lines.back().at - first) / 20;
    EXPECT_GT(took, rest - 10ms);  // it noticed a little late that it had to wait
    EXPECT_LT(took, rest + 5s);
    EXPECT_TRUE(player.heard == datagrams) << "nothing is left out";
    EXPECT_TRUE(stranger.heard.empty());
}
