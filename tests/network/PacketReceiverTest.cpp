#include "network/PacketReceiver.h"

#include "Common/Protobuf/Object/Object.pb.h"
#include "network/PacketSender.h"
#include "peer/ScriptedServer.h"
#include "scene/General.h"
#include "scene/Projectile.h"
#include "tests/hostile/Arena.h"
#include "tests/network/Support.h"

#include <google/protobuf/text_format.h>
#include <boost/format.hpp>

#include <sstream>

namespace {

using messages::destroyFrame;
using messages::updateFrame;

constexpr std::uint64_t beyondSigned = 0x8000000000000005U;

// A full state of an object at (1, 2, 3), with more fields in protobuf's text format.
std::string info(std::uint64_t id, unsigned int type, const std::string& fields = "")
{
    const std::string text =
        "id: %1% objectType: %2% timestamp: 1000 position {x: 1 y: 2 z: 3} "
        "orientation {w: 0.5 x: -0.5 y: 0.25 z: 2} ";
    Vantor::ObjectInfo info;
    EXPECT_TRUE(
        google::protobuf::TextFormat::ParseFromString(str(boost::format(text) % id % type) + fields, &info));
    return MessageSerializer::serializeMessage(info);
}

std::string player(std::uint64_t id, const std::string& fields = "blueTeam: true name: 'Rosa'")
{
    return info(id, SGT_PLAYER, "playerdata {health: 87.5 " + fields + "}");
}

std::string shot(std::uint64_t id)
{
    return info(id, SGT_PROJECTILE, "projectiledata {velocity {x: 0 y: 0 z: 9} blueTeam: true}");
}

std::ostream& operator<<(std::ostream& out, const Vector3& v)
{
    return out << v.x << ',' << v.y << ',' << v.z << ' ';
}

// The objects that the server knows: type, id, newest two times, newest state and their own data. Explosions
// have the drawn position only.
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
        if (const auto* ship = dynamic_cast<const Player*>(object)) {
            out << ship->name << ' ' << ship->health << ' ' << ship->score << ' ' << ship->blueTeam;
        } else if (const auto* shot = dynamic_cast<const Projectile*>(object)) {
            out << shot->velocity[0] << shot->blueTeam;
        }
    }
    return out.str();
}

}  // namespace

TEST(ServerMessages, ChangeTheScene)
{
    const std::string state = " 1000 1000 at 1,2,3 0.5 -0.5,0.25,2 ";
    const std::string rosa = "0#5" + state + "Rosa 87.5 0 1";
    const std::pair<std::string, std::string> cases[] = {
        // without a team or a name, and of unknown types
        {player(5, "name: 'Rosa'") + player(5, "blueTeam: true"), ""},
        {info(5, SGT_BILLBOARD) + info(5, SGT_CARRIER) + info(5, 0xFFFFFFFFU), ""},
        {shot(6), "1#6" + state + "0,0,9 1"},
        {player(5, "blueTeam: false name: ''"), "0#5" + state + " 87.5 0 0"},
        {player(5) + info(5, SGT_PLAYER, "playerdata {health: -1 score: 12}") + info(5, SGT_PLAYER),
         "0#5" + state + "Rosa -1 12 1"},
        // player data for a shot and a carrier
        {shot(6) + player(6, "") + player(0, "name: '" + std::string(500, 'n') + "'"),
         "3#0" + state + "1#6" + state + "0,0,9 1"},
        // updates, also of an unknown object and without a state
        {player(5) + updateFrame(5, 1100, {2, 2, 3}, {0, 0, 1, 4}) + updateFrame(4, 1100, {}),
         "0#5 1100 1000 at 2,2,3 0 0,1,4 Rosa 87.5 0 1"},
        {player(5) + peer::rawFrame(2, "\x08\x05\x10\x01"), "0#5 1 1000 at 0,0,0 0 0,0,0 Rosa 87.5 0 1"},
        {updateFrame(5, 1, {}) + player(5) + updateFrame(5, 1100, {}) + player(5), rosa},
        {player(beyondSigned) + player(5) + destroyFrame(beyondSigned) + destroyFrame(4),
         "Player Rosa logged out\n" + rosa},
        {player(5, R"(blueTeam: true name: '%s\n\033\000X')") + destroyFrame(5), "Player %s?? logged out\n"}};
    Arena arena;
    printedBy([&] { arena.receive(player(5)); });  // its resources are loaded
    for (const auto& [frames, printedAndScene] : cases) {
        arena.reset();
        const std::string printed = printedBy([&, &bytes = frames] { arena.receive(bytes); });
        EXPECT_EQ(printed + scene(), printedAndScene);
    }
    arena.reset();
    arena.receive(shot(6));
    arena.receive(destroyFrame(6));
    EXPECT_EQ(scene(), "explosion at 1,2,3.15 ") << "where the shot was drawn";
}

TEST(ServerMessages, AWelcomeAndTheFirstObjectSetTheClient)
{
    Arena arena;
    arena.receive(messages::welcomeFrame({4}, 1));
    arena.receive(messages::welcomeFrame({beyondSigned}, 0xABC12345U) + info(5, SGT_PLAYER));
    EXPECT_EQ(arena.receiver.playerId, beyondSigned);
    EXPECT_EQ(PacketSender::getInstance()->qport, 0x2345);
    EXPECT_FALSE(Timer::isSynced) << "nothing was created";
    arena.receive(player(5));
    EXPECT_EQ(std::exchange(Timer::clock, 7U), 1000U);
    arena.receive(player(6));
    EXPECT_EQ(Timer::clock, 7U);
}

TEST(ServerMessages, AnyPlayerCarriesTheTeamScores)
{
    Arena arena;
    arena.receive(player(1) + player(1, "redTeamScore: 3 blueTeamScore: 5") + player(1, "redTeamScore: -4") +
                  player(1, "") + info(1, SGT_PROJECTILE, "playerdata {health: 1 redTeamScore: 99}"));
    EXPECT_EQ(General::getInstance()->redTeamScore, -4) << "a shot is no player";
    EXPECT_EQ(General::getInstance()->blueTeamScore, 5) << "an absent score stays";
}

TEST(ServerMessages, TheStreamIsAppliedBeforeTheDatagrams)
{
    Arena arena;
    std::string datagram = updateFrame(5, 2000, {9, 9, 9});
    arena.receiver.handleUDPReceive({}, datagram.data(), datagram.size(), arena.receiver.getUDPSocket());
    arena.receive(player(5));
    EXPECT_EQ(scene(), "0#5 2000 2000 at 9,9,9 1 0,0,0 Rosa 87.5 0 1");
}
