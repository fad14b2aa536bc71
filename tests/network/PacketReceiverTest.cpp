#include "network/PacketReceiver.h"

#include "Common/Protobuf/Object/Object.pb.h"
#include "network/PacketSender.h"
#include "scene/General.h"
#include "scene/Projectile.h"
#include "tests/hostile/Arena.h"
#include "tests/network/Support.h"

#include <google/protobuf/text_format.h>

#include <sstream>

namespace {

using messages::destroyFrame;
using messages::updateFrame;

constexpr std::uint64_t beyondSigned = 0x8000000000000005U;

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

std::string rosa(std::uint64_t id)
{
    return info(id, SGT_PLAYER, "playerdata {health: 87.5 blueTeam: true name: 'Rosa'}");
}

std::string shot(std::uint64_t id)
{
    return info(id, SGT_PROJECTILE, "projectiledata {velocity {x: 0 y: 0 z: 9} blueTeam: true}");
}

std::ostream& operator<<(std::ostream& out, const Vector3& v)
{
    return out << v.x << ',' << v.y << ',' << v.z << ' ';
}

// The objects that the server knows: type, id, newest two times, newest state and their own data; of
// explosions the drawn position.
std::string scene()
{
    std::ostringstream out;
    for (const Transform* object : SceneGraph::instance->children) {
        const Quaternion& q = object->serverOrientation[0];
        if (object->type == SGT_BILLBOARD) {
            out << "explosion at " << object->position;
        } else if (object->serverTime[0] != 0) {
            out << object->type << '#' << object->id << ' ' << object->serverTime[0] << ' '
                << object->serverTime[1] << " at " << object->serverPosition[0] << q.w << ' '
                << Vector3(q.x, q.y, q.z);
        }
        if (const auto* player = dynamic_cast<const Player*>(object)) {
            out << player->name << ' ' << player->health << ' ' << player->score << ' ' << player->blueTeam;
        } else if (const auto* projectile = dynamic_cast<const Projectile*>(object)) {
            out << projectile->velocity[0] << projectile->blueTeam;
        }
    }
    return out.str();
}

}  // namespace

TEST(ServerMessages, ChangeTheScene)
{
    const std::string state = " 1000 1000 at 1,2,3 0.5 -0.5,0.25,2 ";
    const struct
    {
        const char* what;
        std::vector<std::string> frames;
        std::string scene;
    } cases[] = {
        {"no team", {info(5, SGT_PLAYER, "playerdata {health: 1 name: 'Rosa'}")}, ""},
        {"no name", {info(5, SGT_PLAYER, "playerdata {health: 1 blueTeam: true}")}, ""},
        {"no data", {info(5, SGT_PLAYER, "")}, ""},
        {"unknown types",
         {info(5, SGT_BILLBOARD, ""), info(5, SGT_CARRIER, ""), info(5, 0xFFFFFFFFU, "")},
         ""},
        {"a player", {rosa(5)}, "0#5" + state + "Rosa 87.5 0 1"},
        {"an empty name",
         {info(5, 0, "playerdata {health: 1 blueTeam: false name: ''}")},
         "0#5" + state + " 1 0 0"},
        {"a shot", {shot(6)}, "1#6" + state + "0,0,9 1"},
        {"absent data",
         {rosa(5), info(5, 0, "playerdata {health: -1 score: 12}"), info(5, 0, "")},
         "0#5" + state + "Rosa -1 12 1"},
        {"an info starts the motion again",
         {rosa(5), info(5, 0, "", 7)},
         "0#5 1000 1000 at 7,2,3 0.5 -0.5,0.25,2 Rosa 87.5 0 1"},
        {"player data for a shot",
         {shot(6), info(6, 0, "playerdata {health: 1 blueTeam: false}")},
         "1#6" + state + "0,0,9 1"},
        {"an update, and one for an unknown object",
         {rosa(5), updateFrame(5, 1100, {2, 2, 3}, {0, 0, 1, 4}), updateFrame(4, 1100, {})},
         "0#5 1100 1000 at 2,2,3 0 0,1,4 Rosa 87.5 0 1"},
        {"an update without a state",
         {rosa(5), rawFrame(2, "\x08\x05\x10\x01")},
         "0#5 1 1000 at 0,0,0 0 0,0,0 Rosa 87.5 0 1"},
        {"ids of 64 bits",
         {rosa(beyondSigned), rosa(5), destroyFrame(beyondSigned), destroyFrame(4)},
         "0#5" + state + "Rosa 87.5 0 1"},
        {"a shot explodes where it was drawn", {shot(6), destroyFrame(6)}, "explosion at 1,2,3.15 "},
    };
    Arena arena;
    for (const auto& c : cases) {
        arena.reset();
        for (const std::string& frame : c.frames) {
            arena.receive(frame);
        }
        EXPECT_EQ(scene(), c.scene) << c.what;
    }
}

TEST(ServerMessages, PlayerDataNeverLandsInACarrier)
{
    Arena arena;
    const std::string name(500, 'n');
    arena.receive(info(0, SGT_PLAYER, "playerdata {health: 1 blueTeam: false name: '" + name + "'}"));
    EXPECT_EQ(scene(), "3#0 1000 1000 at 1,2,3 0.5 -0.5,0.25,2 ");
    const auto* carrier = dynamic_cast<TestCube*>(SceneGraph::instance->getOBjectById(0));
    EXPECT_TRUE(carrier->flag && carrier->blueTeam);
}

TEST(ServerMessages, TheFirstObjectSynchronisesTheClock)
{
    Arena arena;
    arena.receive(messages::welcomeFrame({beyondSigned}, 0xABC12345U) + info(5, 7, "") +
                  info(5, SGT_PLAYER, ""));
    EXPECT_EQ(arena.receiver.playerId, beyondSigned);
    EXPECT_EQ(PacketSender::getInstance()->qport, 0x2345);
    EXPECT_FALSE(Timer::isSynced) << "nothing was created";
    arena.receive(rosa(5));
    EXPECT_EQ(std::exchange(Timer::clock, 7U), 1000U);
    arena.receive(rosa(6));
    EXPECT_EQ(Timer::clock, 7U);
}

TEST(ServerMessages, AnyPlayerCarriesTheTeamScores)
{
    Arena arena;
    arena.receive(rosa(1) + info(1, SGT_PLAYER, "playerdata {health: 1 redTeamScore: 3 blueTeamScore: 5}") +
                  info(1, SGT_PLAYER, "playerdata {health: 1 redTeamScore: -4}") +
                  info(1, SGT_PROJECTILE, "playerdata {health: 1 redTeamScore: 99}"));
    EXPECT_EQ(General::getInstance()->redTeamScore, -4) << "a shot is no player";
    EXPECT_EQ(General::getInstance()->blueTeamScore, 5) << "an absent score stays";
}

TEST(ServerMessages, OnlyPlayersLogOutWithAPrintableName)
{
    Arena arena;
    arena.receive(shot(60) +
                  info(5, SGT_PLAYER, R"(playerdata {health: 1 blueTeam: true name: '%s\n\033\000X'})"));
    EXPECT_EQ(printedBy([&] { arena.receive(destroyFrame(60) + destroyFrame(5) + destroyFrame(6)); }),
              "Player %s?? logged out\n");
}

TEST(ServerMessages, TheStreamIsAppliedBeforeTheDatagrams)
{
    Arena arena;
    std::string datagram = updateFrame(5, 2000, {9, 9, 9});
    arena.receiver.handleUDPReceive({}, datagram.data(), datagram.size(), arena.receiver.getUDPSocket());
    arena.receive(rosa(5));
    EXPECT_EQ(scene(), "0#5 2000 2000 at 9,9,9 1 0,0,0 Rosa 87.5 0 1");
}

// tests/end_to_end checks how a timeout ends the process.
TEST(ServerMessages, AFailedDatagramAlsoRearmsTheWatchdog)
{
    Arena arena;
    PacketReceiver& receiver = arena.receiver;
    receiver.udpTimeoutSeconds = 5000;
    const boost::system::error_code refused = boost::asio::error::connection_refused;
    EXPECT_EQ(printedBy([&] {
                  receiver.handleUDPReceive(refused, nullptr, 0, receiver.getUDPSocket());
                  EXPECT_GT(receiver.watchdog.expires_from_now(), boost::posix_time::seconds(4990));
                  EXPECT_EQ(receiver.watchdog.cancel(), 1U) << "armed";
                  receiver.resetTimer();  // nothing waits any more, as after the timeout
              }),
              "Error in handleUDPReceive: Connection refused (111)\nTimer already expired\n");
    EXPECT_EQ(receiver.watchdog.cancel(), 0U);
}
