#include "network/PacketReceiver.h"

#include "Common/Protobuf/Object/Object.pb.h"
#include "network/PacketSender.h"
#include "network/Timer.h"
#include "scene/General.h"
#include "scene/Player.h"
#include "scene/Projectile.h"
#include "scene/SceneGraph.h"
#include "scene/TestCube.h"
#include "tests/network/Loopback.h"
#include "tests/support/Messages.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr std::uint64_t beyondSigned = 0x8000000000000005U;

void place(Vantor::ObjectInfo& info, Vector3 at)
{
    info.mutable_position()->set_x(at.x);
    info.mutable_position()->set_y(at.y);
    info.mutable_position()->set_z(at.z);
}

Vantor::ObjectInfo infoOf(std::uint64_t id, unsigned int type, Vector3 at = {}, unsigned int time = 1000)
{
    Vantor::ObjectInfo info;
    info.set_id(id);
    info.set_objecttype(type);
    info.set_timestamp(time);
    place(info, at);
    Vantor::Orientation& o = *info.mutable_orientation();
    o.set_w(0.5F);
    o.set_x(-0.5F);
    o.set_y(0.5F);
    o.set_z(-0.5F);
    return info;
}

Vantor::ObjectInfo playerInfo(std::uint64_t id, const std::string& name, Vector3 at = {})
{
    Vantor::ObjectInfo info = infoOf(id, SGT_PLAYER, at);
    info.mutable_playerdata()->set_health(87.5F);
    info.mutable_playerdata()->set_blueteam(true);
    info.mutable_playerdata()->set_name(name);
    return info;
}

class ServerMessages : public testing::Test
{
protected:
    ServerMessages() { Timer::isSynced = false; }
    ~ServerMessages() override
    {
        delete &graph;
        SceneGraph::instance = nullptr;
    }
    void receive(Vantor::ObjectInfo info) { EXPECT_TRUE(receiver.dispatchObjectInfo(&info)); }
    void receive(Vantor::ObjectUpdate update) { EXPECT_TRUE(receiver.dispatchObjectUpdate(&update)); }
    void destroy(std::uint64_t id)
    {
        Vantor::ObjectDestroy message;
        message.set_id(id);
        EXPECT_TRUE(receiver.dispatchObjectDestroy(&message));
    }
    template <class Kind = Transform>
    Kind* find(std::uint64_t id)
    {
        return dynamic_cast<Kind*>(graph.getOBjectById(static_cast<long long>(id)));
    }

    SceneGraph& graph = *(SceneGraph::instance = new SceneGraph);
    boost::asio::io_service service;
    PacketReceiver receiver{&service, nullptr, &graph, 1000};
};

}  // namespace

TEST_F(ServerMessages, TheWelcomeGivesTheOwnIdAndSixteenBitsOfQport)
{
    EXPECT_EQ(receiver.playerId, 0U);
    Vantor::Welcome welcome;
    welcome.set_id(beyondSigned);
    welcome.set_qport(0xABC12345U);
    EXPECT_TRUE(receiver.dispatchWelcome(&welcome));
    EXPECT_EQ(receiver.playerId, beyondSigned);
    EXPECT_EQ(PacketSender::getInstance()->qport, 0x2345);
    EXPECT_TRUE(graph.children.empty()) << "the ship itself is announced separately";
}

TEST_F(ServerMessages, OnlyACompleteInfoOfAKnownTypeMakesAnObject)
{
    Vantor::ObjectInfo nameless = playerInfo(3, "");
    nameless.mutable_playerdata()->clear_name();
    Vantor::ObjectInfo teamless = playerInfo(4, "Rosa");
    teamless.mutable_playerdata()->clear_blueteam();
    Vantor::ObjectInfo shotWithData = infoOf(7, SGT_PROJECTILE);
    shotWithData.mutable_projectiledata()->set_blueteam(true);
    shotWithData.mutable_projectiledata()->mutable_velocity()->set_z(9);
    const struct
    {
        const char* what;
        Vantor::ObjectInfo info;
        int expected;  // SGT_NONE: nothing
    } table[] = {{"a complete player", playerInfo(1, "Rosa"), SGT_PLAYER},
                 {"an empty name is a name", playerInfo(2, ""), SGT_PLAYER},
                 {"no name", nameless, SGT_NONE},
                 {"no team", teamless, SGT_NONE},
                 {"no player data", infoOf(5, SGT_PLAYER), SGT_NONE},
                 {"a shot", infoOf(6, SGT_PROJECTILE), SGT_PROJECTILE},
                 {"a shot with data", shotWithData, SGT_PROJECTILE},
                 {"an explosion", infoOf(8, SGT_BILLBOARD), SGT_NONE},
                 {"a carrier", infoOf(9, SGT_CARRIER), SGT_NONE},
                 {"type 7", infoOf(10, 7), SGT_NONE},
                 {"type -1", infoOf(11, 0xFFFFFFFFU), SGT_NONE}};
    for (const auto& [what, info, expected] : table) {
        Timer::isSynced = false;
        receive(info);
        const Transform* object = find(info.id());
        EXPECT_EQ(object == nullptr ? SGT_NONE : object->type, expected) << what;
        EXPECT_EQ(Timer::isSynced, expected != SGT_NONE) << what;
    }
    EXPECT_EQ(graph.children.size(), 4U);
    EXPECT_EQ(find<Projectile>(7)->velocity[0], Vector3(0, 0, 9));
    EXPECT_TRUE(find<Projectile>(7)->blueTeam);
    EXPECT_FALSE(find<Projectile>(6)->blueTeam);

    nameless.mutable_playerdata()->set_name("late");
    receive(nameless);
    EXPECT_NE(find<Player>(3), nullptr) << "a later, complete one makes it";
}

TEST_F(ServerMessages, AnInfoPlacesTheObjectAtOnceAndLaterOnesRefreshIt)
{
    receive(playerInfo(1, "Rosa", {1, 2, 3}));
    auto* ship = find<Player>(1);
    EXPECT_EQ(ship->smoothPosition, Vector3(1, 2, 3));
    EXPECT_EQ(ship->serverOrientation[2], Quaternion(0.5F, -0.5F, 0.5F, -0.5F));
    EXPECT_EQ(ship->health, 87.5F);

    Vantor::ObjectInfo refresh = infoOf(1, SGT_PLAYER, {4, 5, 6}, 2000);
    refresh.mutable_playerdata()->set_health(-1);
    refresh.mutable_playerdata()->set_score(12);
    receive(refresh);
    EXPECT_EQ(graph.children.size(), 1U);
    EXPECT_EQ(ship->smoothPosition, Vector3(4, 5, 6));
    EXPECT_EQ(ship->health, -1.0F);
    EXPECT_EQ(ship->score, 12);
    EXPECT_EQ(ship->name, "Rosa") << "what is absent stays";
    EXPECT_TRUE(ship->blueTeam);

    receive(infoOf(1, SGT_PLAYER, {7, 8, 9}));
    EXPECT_EQ(ship->smoothPosition, Vector3(7, 8, 9)) << "without any player data";
    EXPECT_EQ(ship->health, -1.0F);
}

TEST_F(ServerMessages, TheFirstInfoThatCountsSynchronisesTheClockForGood)
{
    receive(infoOf(1, 7, {}, 3000));
    EXPECT_FALSE(Timer::isSynced);
    receive(infoOf(1, SGT_PROJECTILE, {}, 5000));
    EXPECT_TRUE(Timer::isSynced);
    EXPECT_EQ(Timer::clock, 5000U);
    receive(infoOf(2, SGT_PROJECTILE, {}, 9000));
    EXPECT_EQ(Timer::clock, 5000U);
}

TEST_F(ServerMessages, AnyPlayersDataCarriesTheTeamScores)
{
    General& general = *General::getInstance();
    general.redTeamScore = general.blueTeamScore = 1;
    Vantor::ObjectInfo info = playerInfo(1, "Rosa");
    info.mutable_playerdata()->set_redteamscore(3);
    receive(info);
    EXPECT_EQ(general.redTeamScore, 3);
    EXPECT_EQ(general.blueTeamScore, 1) << "an absent score stays";
    info.mutable_playerdata()->set_redteamscore(-4);
    info.mutable_playerdata()->set_blueteamscore(5);
    receive(info);
    EXPECT_EQ(general.redTeamScore, -4) << "also where the player is known already";
    EXPECT_EQ(general.blueTeamScore, 5);

    Vantor::ObjectInfo shot = infoOf(2, SGT_PROJECTILE);
    *shot.mutable_playerdata() = info.playerdata();
    shot.mutable_playerdata()->set_redteamscore(99);
    receive(shot);
    EXPECT_EQ(general.redTeamScore, -4) << "a shot is no player";
}

TEST_F(ServerMessages, APlayersDataNeverLandsInAnotherKindOfObject)
{
    auto* carrier = new TestCube(0, true, false);
    graph.attach(carrier);
    receive(infoOf(6, SGT_PROJECTILE));
    for (const std::uint64_t id : {0U, 6U}) {
        receive(playerInfo(id, std::string(500, 'n'), {1, 2, 3}));
        EXPECT_EQ(find<Player>(id), nullptr);
        EXPECT_EQ(find(id)->smoothPosition, Vector3(1, 2, 3)) << "though the state itself arrives";
    }
    EXPECT_FALSE(carrier->blueTeam);
    EXPECT_TRUE(carrier->flag);
    EXPECT_FALSE(find<Projectile>(6)->blueTeam);
}

TEST_F(ServerMessages, AnUpdateMovesAKnownObjectAndNoOther)
{
    Vantor::ObjectUpdate update;
    update.ParseFromString(support::update(5, 1100, {2, 2, 3}, {0, 0, 1, 0}).substr(3));
    receive(update);
    EXPECT_TRUE(graph.children.empty());
    EXPECT_FALSE(Timer::isSynced);

    receive(playerInfo(5, "Rosa", {1, 2, 3}));
    receive(update);
    const Transform* ship = find(5);
    EXPECT_EQ(ship->serverTime[0], 1100U);
    EXPECT_EQ(ship->serverTime[1], 1000U) << "one state in a row, no fresh start";
    EXPECT_EQ(ship->serverPosition[0], Vector3(2, 2, 3));
    EXPECT_EQ(ship->serverOrientation[0], Quaternion(0, 0, 1, 0));

    update.clear_position();
    update.clear_orientation();
    receive(update);
    EXPECT_EQ(ship->serverPosition[0], Vector3()) << "absent means all zeros";
    EXPECT_EQ(ship->serverOrientation[0], Quaternion(0, 0, 0, 0));
}

TEST_F(ServerMessages, ADestroyedShotLeavesAnExplosionWhereItIsShown)
{
    receive(infoOf(60, SGT_PROJECTILE, {1, 2, 3}));
    find(60)->position = {4, 5, 6};
    destroy(60);
    EXPECT_NE(find(60), nullptr) << "removed only with the frame";
    graph.applyRemoveList();
    EXPECT_EQ(find(60), nullptr);
    ASSERT_EQ(graph.getListOfType(SGT_BILLBOARD)->size(), 1U);
    EXPECT_EQ(graph.getListOfType(SGT_BILLBOARD)->front()->position, Vector3(4, 5, 6));
    EXPECT_EQ(graph.children.size(), 1U);
}

TEST_F(ServerMessages, ADestroyedPlayerIsNamedAndLeavesNothing)
{
    receive(playerInfo(5, "Rosa %s"));
    testing::internal::CaptureStdout();
    destroy(5);
    destroy(6);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Player Rosa %s logged out\n");
    graph.applyRemoveList();
    EXPECT_TRUE(graph.children.empty());
}

TEST_F(ServerMessages, IdsUseAllSixtyFourBits)
{
    receive(playerInfo(beyondSigned, "far"));
    receive(playerInfo(5, "near"));
    receive(playerInfo(std::numeric_limits<std::uint64_t>::max(), "last"));
    EXPECT_EQ(graph.children.size(), 3U);
    EXPECT_EQ(find<Player>(beyondSigned)->name, "far");
    EXPECT_EQ(find<Player>(beyondSigned)->id, beyondSigned);
    destroy(beyondSigned);
    graph.applyRemoveList();
    EXPECT_EQ(find(beyondSigned), nullptr);
    EXPECT_EQ(find<Player>(5)->name, "near");
}

TEST_F(ServerMessages, OfOneFrameTheStreamIsAppliedBeforeTheDatagrams)
{
    loopback::Connection connection(service);
    loopback::Peer peer(service);
    receiver.Socket(&connection.client);
    peer.sendTo(*receiver.getUDPSocket(), support::update(5, 2000, {9, 9, 9}));
    ASSERT_TRUE(loopback::runUntil(service, [&] { return !receiver.udpEvents.empty(); }));
    support::Ship ship;
    ship.id = 5;
    connection.write(support::shipInfo(ship));
    ASSERT_TRUE(loopback::runUntil(service, [&] { return !receiver.tcpEvents.empty(); }));
    receiver.dispatchPackets();
    ASSERT_NE(find(5), nullptr);
    EXPECT_EQ(find(5)->serverPosition[0], Vector3(9, 9, 9));
}

TEST_F(ServerMessages, OnlyDatagramsPushTheWatchdogForward)
{
    const auto early = boost::posix_time::microsec_clock::universal_time() + boost::posix_time::seconds(500);
    const auto setBack = [&] {
        receiver.watchdog.expires_at(early);
        receiver.watchdog.async_wait([](const boost::system::error_code&) {});
    };
    loopback::Connection connection(service);
    loopback::Peer peer(service);
    receiver.Socket(&connection.client);

    setBack();
    connection.write(support::destroy(1));
    ASSERT_TRUE(loopback::runUntil(service, [&] { return !receiver.tcpEvents.empty(); }));
    EXPECT_EQ(receiver.watchdog.expires_at(), early);

    peer.sendTo(*receiver.getUDPSocket(), "?");
    testing::internal::CaptureStdout();
    loopback::runUntil(service, [&] { return receiver.watchdog.expires_at() != early; });
    testing::internal::GetCapturedStdout();
    EXPECT_GT(receiver.watchdog.expires_from_now(), boost::posix_time::seconds(990)) << "even a useless one";

    setBack();
    testing::internal::CaptureStdout();
    receiver.handleUDPReceive(boost::asio::error::connection_refused, nullptr, 0, receiver.getUDPSocket());
    testing::internal::GetCapturedStdout();
    EXPECT_GT(receiver.watchdog.expires_from_now(), boost::posix_time::seconds(990)) << "even a failed one";
    EXPECT_EQ(receiver.watchdog.cancel(), 1U) << "and it is armed";
}

TEST_F(ServerMessages, AnExpiredWatchdogIsNotArmedAgain)
{
    receiver.watchdog.cancel();
    testing::internal::CaptureStdout();
    receiver.resetTimer();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Timer already expired\n");
    EXPECT_EQ(receiver.watchdog.cancel(), 0U);
}
