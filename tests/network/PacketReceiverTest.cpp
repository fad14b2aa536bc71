#include "network/PacketReceiver.h"

#include "Common/Protobuf/Object/Object.pb.h"
#include "network/MessageSerializer.h"
#include "network/Messages.h"
#include "network/PacketSender.h"
#include "network/Timer.h"
#include "peer/ScriptedServer.h"
#include "scene/General.h"
#include "scene/Player.h"
#include "scene/Projectile.h"
#include "scene/SceneGraph.h"
#include "scene/TestCube.h"

#include <google/protobuf/text_format.h>
#include <gtest/gtest.h>

namespace {

constexpr std::uint64_t beyondSigned = 0x8000000000000005U;
const std::string rosa = "playerdata {health: 87.5 blueTeam: true name: 'Rosa'}";
const std::string flight = "projectiledata {velocity {x: 0 y: 0 z: 9} blueTeam: true}";

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
    void receive(const std::string& frame) { EXPECT_TRUE(receiver.dispatchEvent(eventOf(frame))); }
    // A full state of an object at (x, 2, 3), with its data in protobuf's text format.
    void announce(std::uint64_t id, unsigned int type, const std::string& data, int x = 1)
    {
        Vantor::ObjectInfo info;
        ASSERT_TRUE(google::protobuf::TextFormat::ParseFromString(
            "id: " + std::to_string(id) + " objectType: " + std::to_string(type) +
                " position {x: " + std::to_string(x) +
                " y: 2 z: 3} orientation {w: 0.5 x: -0.5 y: 0.25 z: 2} timestamp: 1000 " + data,
            &info));
        receive(MessageSerializer::serializeMessage(info));
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

TEST_F(ServerMessages, IdsUseAllSixtyFourBitsAndTheQportSixteen)
{
    receive(messages::welcomeFrame({beyondSigned}, 0xABC12345U));
    EXPECT_EQ(receiver.playerId, beyondSigned);
    EXPECT_EQ(PacketSender::getInstance()->qport, 0x2345);
    EXPECT_TRUE(graph.children.empty()) << "the ship itself is announced separately";
    announce(beyondSigned, SGT_PLAYER, rosa);
    announce(5, SGT_PLAYER, rosa);
    receive(messages::destroyFrame(beyondSigned));
    graph.applyRemoveList();
    EXPECT_EQ(find(beyondSigned), nullptr);
    EXPECT_NE(find(5), nullptr);
}

TEST_F(ServerMessages, OnlyACompleteInfoOfAKnownTypeMakesAnObjectAndTheFirstSynchronisesTheClock)
{
    const std::pair<unsigned int, std::string> incomplete[] = {
        {SGT_PLAYER, "playerdata {health: 1 blueTeam: true}"},
        {SGT_PLAYER, "playerdata {health: 1 name: 'Rosa'}"},
        {SGT_PLAYER, ""},
        {SGT_BILLBOARD, rosa},
        {SGT_CARRIER, rosa},
        {0xFFFFFFFFU, rosa}};
    for (const auto& [type, data] : incomplete) {
        announce(3, type, data);
        EXPECT_TRUE(graph.children.empty() && !Timer::isSynced) << type << data;
    }
    announce(2, SGT_PLAYER, "playerdata {health: 1 blueTeam: true name: ''}");
    EXPECT_NE(find<Player>(2), nullptr) << "an empty name is a name";
    EXPECT_EQ(std::exchange(Timer::clock, 7U), 1000U);
    announce(3, SGT_PROJECTILE, flight);
    EXPECT_EQ(Timer::clock, 7U);
    ASSERT_NE(find<Projectile>(3), nullptr);
    EXPECT_EQ(find<Projectile>(3)->velocity[0], Vector3(0, 0, 9));
    EXPECT_TRUE(find<Projectile>(3)->blueTeam);
}

TEST_F(ServerMessages, AnInfoPlacesTheObjectAtOnceAndLaterOnesRefreshWhatTheyHave)
{
    announce(1, SGT_PLAYER, rosa);
    const auto* ship = find<Player>(1);
    EXPECT_EQ(ship->smoothPosition, Vector3(1, 2, 3));
    EXPECT_EQ(ship->serverOrientation[2], Quaternion(0.5F, -0.5F, 0.25F, 2));
    EXPECT_EQ(ship->health, 87.5F);
    announce(1, SGT_PLAYER, "playerdata {health: -1 score: 12}");
    announce(1, SGT_PLAYER, "", 4);
    EXPECT_EQ(graph.children.size(), 1U);
    EXPECT_EQ(ship->smoothPosition, Vector3(4, 2, 3));
    EXPECT_EQ(ship->health, -1.0F);
    EXPECT_EQ(ship->score, 12);
    EXPECT_EQ(ship->name, "Rosa");
    EXPECT_TRUE(ship->blueTeam);
}

TEST_F(ServerMessages, AnyPlayersDataCarriesTheTeamScoresThatItHas)
{
    announce(1, SGT_PLAYER,
             "playerdata {health: 1 blueTeam: true name: '' redTeamScore: 3 blueTeamScore: 5}");
    announce(1, SGT_PLAYER, "playerdata {health: 1 redTeamScore: -4}");
    announce(1, SGT_PROJECTILE, "playerdata {health: 1 redTeamScore: 99}");
    EXPECT_EQ(General::getInstance()->redTeamScore, -4) << "a shot is no player";
    EXPECT_EQ(General::getInstance()->blueTeamScore, 5) << "an absent score stays";
}

TEST_F(ServerMessages, APlayersDataNeverLandsInAnotherKindOfObject)
{
    auto* carrier = new TestCube(0, true, true);
    graph.attach(carrier);
    announce(6, SGT_PROJECTILE, flight);
    for (const std::uint64_t id : {0U, 6U}) {
        const std::string name(500, 'n');
        announce(id, SGT_PLAYER, "playerdata {health: 1 blueTeam: false name: '" + name + "'}", 7);
        EXPECT_EQ(find(id)->smoothPosition, Vector3(7, 2, 3)) << "though the state itself arrives";
    }
    EXPECT_TRUE(carrier->flag && carrier->blueTeam && find<Projectile>(6)->blueTeam);
}

TEST_F(ServerMessages, AnUpdateMovesAKnownObjectAndNoOther)
{
    announce(5, SGT_PLAYER, rosa);
    for (const std::uint64_t id : {4U, 5U}) {
        receive(messages::updateFrame(id, 1100, {2, 2, 3}, {0, 0, 1, 0}));
    }
    EXPECT_EQ(graph.children.size(), 1U);
    const Transform* ship = find(5);
    EXPECT_EQ(ship->serverTime[0], 1100U);
    EXPECT_EQ(ship->serverTime[1], 1000U) << "one state in a row, no fresh start";
    EXPECT_EQ(ship->serverPosition[0], Vector3(2, 2, 3));
    EXPECT_EQ(ship->serverOrientation[0], Quaternion(0, 0, 1, 0));
    receive(peer::rawFrame(2, "\x08\x05\x10\x01"));
    EXPECT_EQ(ship->serverPosition[0], Vector3()) << "absent means all zeros";
    EXPECT_EQ(ship->serverOrientation[0], Quaternion(0, 0, 0, 0));
}

TEST_F(ServerMessages, ADestroyedShotLeavesAnExplosionAndAPlayerOnlyItsName)
{
    announce(60, SGT_PROJECTILE, flight);
    announce(5, SGT_PLAYER, "playerdata {health: 1 blueTeam: true name: 'Rosa %s'}");
    find(60)->position = {4, 5, 6};
    testing::internal::CaptureStdout();
    for (const std::uint64_t id : {60U, 5U, 6U}) {
        receive(messages::destroyFrame(id));
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
    receiver.addUDPNetworkEvent(eventOf(messages::updateFrame(0, 2000, {9, 9, 9})));
    receiver.addTCPNetworkEvent(eventOf(messages::infoFrame(messages::ShipState())));
    receiver.dispatchPackets();
    ASSERT_NE(find(0), nullptr);
    EXPECT_EQ(find(0)->serverPosition[0], Vector3(9, 9, 9));
}

// How a timeout ends the process is compared in tests/end_to_end.
TEST_F(ServerMessages, EvenAFailedDatagramPushesTheWatchdogForwardUnlessItHasFired)
{
    receiver.udpTimeoutSeconds = 2000;
    testing::internal::CaptureStdout();
    receiver.handleUDPReceive(boost::asio::error::connection_refused, nullptr, 0, receiver.getUDPSocket());
    EXPECT_GT(receiver.watchdog.expires_from_now(), boost::posix_time::seconds(1990));
    EXPECT_EQ(receiver.watchdog.cancel(), 1U) << "armed";
    receiver.resetTimer();  // nothing waits any more, as after the timeout
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Error in handleUDPReceive: Connection refused (111)\nTimer already expired\n");
    EXPECT_EQ(receiver.watchdog.cancel(), 0U);
}
