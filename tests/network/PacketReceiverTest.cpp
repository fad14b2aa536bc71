#include "network/PacketReceiver.h"

#include "Common/Protobuf/Object/Object.pb.h"
#include "network/MessageSerializer.h"
#include "network/Messages.h"
#include "network/PacketSender.h"
#include "network/Timer.h"
#include "scene/General.h"
#include "scene/Player.h"
#include "scene/Projectile.h"
#include "scene/SceneGraph.h"
#include "scene/SceneObjectFactory.h"
#include "scene/TestCube.h"
#include "tests/network/Support.h"

#include <google/protobuf/text_format.h>

#include <sstream>

namespace {

constexpr std::uint64_t beyondSigned = 0x8000000000000005U;
const std::string rosa = "playerdata {health: 87.5 blueTeam: true name: 'Rosa'}";
const std::string flight = "projectiledata {velocity {x: 0 y: 0 z: 9} blueTeam: true}";

boost::shared_ptr<NetworkEvent> eventOf(const std::string& frame)
{
    std::string leftover;
    return MessageSerializer::deserializeMessageArray(frame.data(), frame.size(), &leftover).front();
}

// A full state of an object at (x, 2, 3), with its data in protobuf's text format.
std::string info(std::uint64_t id, unsigned int type, const std::string& data, int x = 1)
{
    Vantor::ObjectInfo info;
    EXPECT_TRUE(google::protobuf::TextFormat::ParseFromString(
        "id: " + std::to_string(id) + " objectType: " + std::to_string(type) +
            " timestamp: 1000 position {x: " + std::to_string(x) +
            " y: 2 z: 3} orientation {w: 0.5 x: -0.5 y: 0.25 z: 2} " + data,
        &info));
    return MessageSerializer::serializeMessage(info);
}

std::string text(const Vector3& v)
{
    std::ostringstream out;
    out << " (" << v.x << ' ' << v.y << ' ' << v.z << ')';
    return out.str();
}

// A client in an empty scene, without a server.
struct Client
{
    Client()
    {
        Timer::isSynced = false;
        SceneObjectFactory::getInstance()->init(0);
    }
    ~Client()
    {
        delete &graph;
        SceneGraph::instance = nullptr;
    }
    void receive(const std::vector<std::string>& frames)
    {
        for (const std::string& frame : frames) {
            EXPECT_TRUE(receiver.dispatchEvent(eventOf(frame)));
            graph.update(0.0F);
        }
    }
    // Of each object: type and id, the drawn position, the newest two times, the newest state, its own data.
    std::string scene()
    {
        graph.applyRemoveList();
        std::ostringstream out;
        for (const Transform* object : graph.children) {
            const Quaternion& q = object->serverOrientation[0];
            out << object->type << '#' << object->id << text(object->position) << ' ' << object->serverTime[0]
                << ' ' << object->serverTime[1] << text(object->serverPosition[0]) << q.w << q.x << q.y
                << q.z;
            if (const auto* player = dynamic_cast<const Player*>(object)) {
                out << ' ' << player->name << ' ' << player->health << ' ' << player->score
                    << player->blueTeam;
            } else if (const auto* shot = dynamic_cast<const Projectile*>(object)) {
                out << text(shot->velocity[0]) << shot->blueTeam;
            }
        }
        return out.str();
    }

    SceneGraph& graph = *(SceneGraph::instance = new SceneGraph);
    boost::asio::io_service service;
    PacketReceiver receiver{&service, nullptr, &graph, 1000};
};

const std::string state = " (1 2 3) 1000 1000 (1 2 3)0.5-0.50.252";

}  // namespace

TEST(ServerMessages, ChangeTheScene)
{
    const struct
    {
        const char* what;
        std::vector<std::string> frames;
        std::string scene;
    } cases[] = {
        {"no team", {info(5, 0, "playerdata {health: 1 name: 'Rosa'}")}, ""},
        {"no name", {info(5, 0, "playerdata {health: 1 blueTeam: true}")}, ""},
        {"no data", {info(5, 0, "")}, ""},
        {"wrong types", {info(5, 2, rosa), info(5, 3, rosa), info(5, 0xFFFFFFFFU, rosa)}, ""},
        {"a player", {info(5, 0, rosa)}, "0#5" + state + " Rosa 87.5 01"},
        {"an empty name",
         {info(5, 0, "playerdata {health: 1 blueTeam: false name: ''}")},
         "0#5" + state + "  1 00"},
        {"a shot", {info(6, 1, flight)}, "1#6" + state + " (0 0 9)1"},
        {"absent data stay",
         {info(5, 0, rosa), info(5, 0, "playerdata {health: -1 score: 12}"), info(5, 0, "")},
         "0#5" + state + " Rosa -1 121"},
        {"an info snaps, also a shot that is called a player",
         {info(6, 1, flight), info(6, 0, "playerdata {health: 1 blueTeam: false name: ''}", 7)},
         "1#6 (7 2 3) 1000 1000 (7 2 3)0.5-0.50.252 (0 0 9)1"},
        {"an update blends, but not an unknown object",
         {info(5, 0, rosa), messages::updateFrame(5, 1100, {2, 2, 3}, {0, 0, 1, 4}),
          messages::updateFrame(4, 1, {})},
         "0#5 (1 2 3) 1100 1000 (2 2 3)0014 Rosa 87.5 01"},
        {"an update without a state",
         {info(5, 0, rosa), rawFrame(2, "\x08\x05\x10\x01")},
         "0#5 (1 2 3) 1 1000 (0 0 0)0000 Rosa 87.5 01"},
        {"ids of 64 bits",
         {info(beyondSigned, 0, rosa), info(5, 0, rosa), messages::destroyFrame(beyondSigned)},
         "0#5" + state + " Rosa 87.5 01"},
        {"a shot explodes where it was drawn",
         {info(6, 1, flight), messages::updateFrame(6, 1100, {2, 2, 3}), messages::destroyFrame(6)},
         "2#2 (1 2 3) 0 0 (0 0 0)1000"},
    };
    for (const auto& c : cases) {
        Client client;
        client.receive(c.frames);
        EXPECT_EQ(client.scene(), c.scene) << c.what;
    }
}

TEST(ServerMessages, PlayerDataNeverLandsInACarrier)
{
    Client client;
    auto* carrier = new TestCube(0, true, true);
    client.graph.attach(carrier);
    client.receive(
        {info(0, 0, "playerdata {health: 1 blueTeam: false name: '" + std::string(500, 'n') + "'}", 7)});
    EXPECT_EQ(carrier->serverPosition[0], Vector3(7, 2, 3));
    EXPECT_TRUE(carrier->flag && carrier->blueTeam);
}

TEST(ServerMessages, TheFirstObjectSynchronisesTheClock)
{
    Client client;
    client.receive({messages::welcomeFrame({beyondSigned}, 0xABC12345U), info(5, 7, rosa), info(5, 0, "")});
    EXPECT_EQ(client.receiver.playerId, beyondSigned);
    EXPECT_EQ(PacketSender::getInstance()->qport, 0x2345);
    EXPECT_FALSE(Timer::isSynced) << "nothing was created";
    client.receive({info(5, 0, rosa)});
    EXPECT_EQ(std::exchange(Timer::clock, 7U), 1000U);
    client.receive({info(6, 0, rosa)});
    EXPECT_EQ(Timer::clock, 7U);
}

TEST(ServerMessages, AnyPlayerCarriesTheTeamScores)
{
    Client client;
    client.receive(
        {info(1, 0, "playerdata {health: 1 blueTeam: true name: '' redTeamScore: 3 blueTeamScore: 5}"),
         info(1, 0, "playerdata {health: 1 redTeamScore: -4}"),
         info(1, 1, "playerdata {health: 1 redTeamScore: 99}")});
    EXPECT_EQ(General::getInstance()->redTeamScore, -4) << "a shot is no player";
    EXPECT_EQ(General::getInstance()->blueTeamScore, 5) << "an absent score stays";
}

TEST(ServerMessages, OnlyAPlayerLogsOutAndItsNameIsPrintable)
{
    Client client;
    client.receive(
        {info(60, 1, flight), info(5, 0, R"(playerdata {health: 1 blueTeam: true name: '%s\n\033\000X'})")});
    EXPECT_EQ(printedBy([&] {
                  client.receive(
                      {messages::destroyFrame(60), messages::destroyFrame(5), messages::destroyFrame(6)});
              }),
              "Player %s?? logged out\n");
    EXPECT_EQ(client.graph.children.size(), 3U) << "removed only with the frame";
}

TEST(ServerMessages, TheStreamIsAppliedBeforeTheDatagrams)
{
    Client client;
    client.receiver.addUDPNetworkEvent(eventOf(messages::updateFrame(5, 2000, {9, 9, 9})));
    client.receiver.addTCPNetworkEvent(eventOf(info(5, 0, rosa)));
    client.receiver.dispatchPackets();
    EXPECT_EQ(client.graph.getOBjectById(5)->serverPosition[0], Vector3(9, 9, 9));
}

// tests/end_to_end checks how a timeout ends the process.
TEST(ServerMessages, AFailedDatagramAlsoRearmsTheWatchdog)
{
    Client client;
    PacketReceiver& receiver = client.receiver;
    receiver.udpTimeoutSeconds = 2000;
    EXPECT_EQ(printedBy([&] {
                  receiver.handleUDPReceive(boost::asio::error::connection_refused, nullptr, 0,
                                            &receiver.udpSocket);
                  EXPECT_GT(receiver.watchdog.expires_from_now(), boost::posix_time::seconds(1990));
                  EXPECT_EQ(receiver.watchdog.cancel(), 1U) << "armed";
                  receiver.resetTimer();  // nothing waits any more, as after the timeout
              }),
              "Error in handleUDPReceive: Connection refused (111)\nTimer already expired\n");
    EXPECT_EQ(receiver.watchdog.cancel(), 0U);
}
