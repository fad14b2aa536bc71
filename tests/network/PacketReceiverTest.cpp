#include "network/PacketReceiver.h"

#include "Common/Protobuf/Object/Object.pb.h"
#include "network/MessageSerializer.h"
#include "network/NetworkEvent.h"
#include "network/PacketSender.h"
#include "network/Timer.h"
#include "scene/General.h"
#include "scene/Player.h"
#include "scene/Projectile.h"
#include "scene/SceneGraph.h"
#include "scene/TestCube.h"
#include "tests/support/Messages.h"

#include <gtest/gtest.h>

namespace {

constexpr std::uint64_t beyondSigned = 0x8000000000000005U;

Vantor::ObjectInfo parsed(const std::string& frame)
{
    Vantor::ObjectInfo info;
    info.ParseFromString(frame.substr(3));
    return info;
}

Vantor::ObjectInfo shot(std::uint64_t id, unsigned int type = SGT_PROJECTILE)
{
    Vantor::ObjectInfo info = parsed(support::shotInfo(id, true, {1, 2, 3}, {0, 0, 9}));
    info.set_objecttype(type);
    return info;
}

Vantor::ObjectInfo rosa(std::uint64_t id)
{
    support::Ship ship;
    ship.id = id;
    ship.blueTeam = true;
    ship.position = {1, 2, 3};
    ship.orientation = {0.5F, -0.5F, 0.5F, -0.5F};
    ship.health = 87.5F;
    return parsed(support::shipInfo(ship));
}

boost::shared_ptr<NetworkEvent> eventOf(const std::string& frame)
{
    std::string leftover;
    return MessageSerializer::deserializeMessageArray(frame.data(), frame.size(), &leftover).front();
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
    void receive(const std::string& frame) { EXPECT_TRUE(receiver.dispatchEvent(eventOf(frame))); }
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

TEST_F(ServerMessages, IdsUseAllSixtyFourBitsAndTheQportSixteen)
{
    receive(support::welcome(beyondSigned, 0xABC12345U));
    EXPECT_EQ(receiver.playerId, beyondSigned);
    EXPECT_EQ(PacketSender::getInstance()->qport, 0x2345);
    EXPECT_TRUE(graph.children.empty()) << "the ship itself is announced separately";
    receive(rosa(beyondSigned));
    receive(rosa(5));
    ASSERT_EQ(graph.children.size(), 2U);
    EXPECT_EQ(find(beyondSigned)->id, beyondSigned);
    receive(support::destroy(beyondSigned));
    graph.applyRemoveList();
    EXPECT_EQ(find(beyondSigned), nullptr);
    EXPECT_NE(find(5), nullptr);
}

TEST_F(ServerMessages, OnlyACompleteInfoOfAKnownTypeMakesAnObjectAndTheFirstSynchronisesTheClock)
{
    Vantor::ObjectInfo unnamed = rosa(2), nameless = rosa(3), teamless = rosa(3), dataless = rosa(3);
    unnamed.mutable_playerdata()->set_name("");
    nameless.mutable_playerdata()->clear_name();
    teamless.mutable_playerdata()->clear_blueteam();
    dataless.clear_playerdata();
    for (const auto& info :
         {nameless, teamless, dataless, shot(3, SGT_BILLBOARD), shot(3, SGT_CARRIER), shot(3, 0xFFFFFFFFU)}) {
        receive(info);
        EXPECT_TRUE(graph.children.empty() && !Timer::isSynced) << info.ShortDebugString();
    }
    receive(unnamed);
    EXPECT_NE(find<Player>(2), nullptr) << "an empty name is a name";
    EXPECT_TRUE(Timer::isSynced);
    Vantor::ObjectInfo later = shot(3);
    later.set_timestamp(9000);
    receive(later);
    ASSERT_NE(find<Projectile>(3), nullptr);
    EXPECT_EQ(find<Projectile>(3)->velocity[0], Vector3(0, 0, 9));
    EXPECT_TRUE(find<Projectile>(3)->blueTeam);
    EXPECT_EQ(Timer::clock, 1000U);
}

TEST_F(ServerMessages, AnInfoPlacesTheObjectAtOnceAndLaterOnesRefreshWhatTheyHave)
{
    receive(rosa(1));
    auto* ship = find<Player>(1);
    EXPECT_EQ(ship->smoothPosition, Vector3(1, 2, 3));
    EXPECT_EQ(ship->serverOrientation[2], Quaternion(0.5F, -0.5F, 0.5F, -0.5F));
    EXPECT_EQ(ship->health, 87.5F);

    Vantor::ObjectInfo refresh = shot(1, SGT_PLAYER);
    refresh.mutable_playerdata()->set_health(-1);
    refresh.mutable_playerdata()->set_score(12);
    receive(refresh);
    refresh.clear_playerdata();
    refresh.mutable_position()->set_x(4);
    receive(refresh);
    EXPECT_EQ(graph.children.size(), 1U);
    EXPECT_EQ(ship->smoothPosition, Vector3(4, 2, 3));
    EXPECT_EQ(ship->health, -1.0F);
    EXPECT_EQ(ship->score, 12);
    EXPECT_EQ(ship->name, "Rosa");
    EXPECT_TRUE(ship->blueTeam);
}

TEST_F(ServerMessages, AnyPlayersDataCarriesTheTeamScoresThatItHas)
{
    General& general = *General::getInstance();
    Vantor::ObjectInfo info = rosa(1);
    Vantor::PlayerData& data = *info.mutable_playerdata();
    data.set_redteamscore(3);
    data.set_blueteamscore(5);
    receive(info);
    data.set_redteamscore(-4);
    data.clear_blueteamscore();
    receive(info);
    EXPECT_EQ(general.redTeamScore, -4) << "also where the player is known already";
    EXPECT_EQ(general.blueTeamScore, 5) << "an absent score stays";
    info.set_objecttype(SGT_PROJECTILE);
    data.set_redteamscore(99);
    receive(info);
    EXPECT_EQ(general.redTeamScore, -4) << "a shot is no player";
}

TEST_F(ServerMessages, APlayersDataNeverLandsInAnotherKindOfObject)
{
    auto* carrier = new TestCube(0, true, true);
    graph.attach(carrier);
    receive(shot(6));
    for (const std::uint64_t id : {0U, 6U}) {
        Vantor::ObjectInfo info = rosa(id);
        info.mutable_playerdata()->set_blueteam(false);
        info.mutable_playerdata()->set_name(std::string(500, 'n'));
        info.mutable_position()->set_x(7);
        receive(info);
        EXPECT_EQ(find(id)->smoothPosition, Vector3(7, 2, 3)) << "though the state itself arrives";
    }
    EXPECT_TRUE(carrier->flag && carrier->blueTeam && find<Projectile>(6)->blueTeam);
}

TEST_F(ServerMessages, AnUpdateMovesAKnownObjectAndNoOther)
{
    receive(rosa(5));
    for (const std::uint64_t id : {4U, 5U}) {
        receive(support::update(id, 1100, {2, 2, 3}, {0, 0, 1, 0}));
    }
    EXPECT_EQ(graph.children.size(), 1U);
    const Transform* ship = find(5);
    EXPECT_EQ(ship->serverTime[0], 1100U);
    EXPECT_EQ(ship->serverTime[1], 1000U) << "one state in a row, no fresh start";
    EXPECT_EQ(ship->serverPosition[0], Vector3(2, 2, 3));
    EXPECT_EQ(ship->serverOrientation[0], Quaternion(0, 0, 1, 0));
    receive(support::frame(2, "\x08\x05\x10\x01"));
    EXPECT_EQ(ship->serverPosition[0], Vector3()) << "absent means all zeros";
    EXPECT_EQ(ship->serverOrientation[0], Quaternion(0, 0, 0, 0));
}

TEST_F(ServerMessages, ADestroyedShotLeavesAnExplosionAndAPlayerOnlyItsName)
{
    receive(shot(60));
    receive(rosa(5));
    find(60)->position = {4, 5, 6};
    find<Player>(5)->name = "Rosa %s";
    testing::internal::CaptureStdout();
    for (const std::uint64_t id : {60U, 5U, 6U}) {
        receive(support::destroy(id));
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Player Rosa %s logged out\n");
    EXPECT_NE(find(60), nullptr) << "removed only with the frame";
    graph.applyRemoveList();
    ASSERT_EQ(graph.children.size(), 1U);
    EXPECT_EQ(graph.children.front()->type, SGT_BILLBOARD);
    EXPECT_EQ(graph.children.front()->position, Vector3(4, 5, 6)) << "where it was shown";
}

TEST_F(ServerMessages, OfOneFrameTheStreamIsAppliedBeforeTheDatagrams)
{
    receiver.addUDPNetworkEvent(eventOf(support::update(0, 2000, {9, 9, 9})));
    receiver.addTCPNetworkEvent(eventOf(support::shipInfo({})));
    receiver.dispatchPackets();
    ASSERT_NE(find(0), nullptr);
    EXPECT_EQ(find(0)->serverPosition[0], Vector3(9, 9, 9));
}

TEST_F(ServerMessages, EvenAUselessOrFailedDatagramPushesTheWatchdogForward)
{
    testing::internal::CaptureStdout();
    for (const boost::system::error_code& error :
         {boost::system::error_code(), make_error_code(boost::asio::error::connection_refused)}) {
        receiver.watchdog.expires_from_now(boost::posix_time::seconds(500));
        receiver.watchdog.async_wait([](const boost::system::error_code&) {});
        receiver.handleUDPReceive(error, nullptr, 0, receiver.getUDPSocket());
        EXPECT_GT(receiver.watchdog.expires_from_now(), boost::posix_time::seconds(990));
        EXPECT_EQ(receiver.watchdog.cancel(), 1U) << "armed";
    }
    testing::internal::GetCapturedStdout();
}

TEST_F(ServerMessages, AnExpiredWatchdogIsNotArmedAgainAndOnlyAnAbortedWaitIsNoReasonToEnd)
{
    receiver.watchdog.cancel();
    testing::internal::CaptureStdout();
    receiver.resetTimer();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Timer already expired\n");
    EXPECT_EQ(receiver.watchdog.cancel(), 0U);
    receiver.udpTimeout(boost::asio::error::operation_aborted);
    EXPECT_EXIT(receiver.udpTimeout(boost::asio::error::bad_descriptor), testing::ExitedWithCode(1), "");
}
