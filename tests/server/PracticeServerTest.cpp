#include "server/net/PracticeServer.h"

#include "tests/server/ServerFixture.h"

#include <map>
#include <set>

using namespace practice;

TEST_F(Server, TellsAClientOfEveryShipAndSendsTwentySnapshotsASecondOnceItKnowsTheAddress)
{
    open(30);
    TestClient& client = join();
    EXPECT_GE(client.id(), Match::firstId);
    EXPECT_NE(client.qport(), 0U);
    EXPECT_EQ(client.heard.positions.size(), 31U);
    EXPECT_EQ(client.heard.positions.count(client.id()), 1U);
    for (const Vantor::ObjectInfo& info : client.heard.infos) {
        const Vantor::PlayerData& data = info.playerdata();
        EXPECT_TRUE(data.has_blueteam() && data.has_name());
        EXPECT_TRUE(data.has_redteamscore() && data.has_blueteamscore());
    }
    run(200ms);
    EXPECT_TRUE(client.datagrams.empty());
    client.steer({});
    ASSERT_TRUE(runUntil([&] { return !client.datagrams.empty(); }));
    run(2s);
    for (const std::string& datagram : client.datagrams) {
        EXPECT_LE(datagram.size(), 1200U);
    }
    std::map<std::uint32_t, std::set<std::uint64_t>> snapshots;
    for (const Vantor::ObjectUpdate& update : client.heard.updates) {
        EXPECT_TRUE(update.has_position() && update.has_orientation());
        EXPECT_TRUE(snapshots[update.timestamp()].insert(update.id()).second) << "a second state";
    }
    ASSERT_NEAR(static_cast<double>(snapshots.size()), 40.0, 20.0);  // the machine may be busy
    EXPECT_EQ(snapshots.rbegin()->first - snapshots.begin()->first, 50U * (snapshots.size() - 1));
    for (const auto& [timestamp, ships] : snapshots) {
        EXPECT_GT(ships.size(), 15U) << timestamp;
    }
}

TEST_F(Server, AClientThatFallsSilentLetsGoOfTheControls)
{
    open(0);
    TestClient& client = join();
    client.steer({Quaternion(), control::fire});
    run(2500ms);
    const std::size_t shots = client.heard.infos.size() - 1;
    EXPECT_GE(shots, 3U);
    EXPECT_LE(shots, 6U);
}

TEST_F(Server, TwoClientsSeeEachOtherMoveAndFireWhileAThirdComesAndGoes)
{
    open(0);
    TestClient& first = join();
    TestClient& second = join();
    first.steer({});
    second.steer({Quaternion(), control::up | control::fire});
    const float start = second.position().y;
    const auto isShot = [](const auto& info) { return info.objecttype() == 1; };
    EXPECT_TRUE(runUntil([&] {
        const auto& infos = first.heard.infos;
        return first.heard.positions[second.id()].y > start + 2.0F &&
               std::any_of(infos.begin(), infos.end(), isShot);
    }));
    TestClient& third = join();
    EXPECT_EQ(third.heard.positions[first.id()], first.position());
    EXPECT_EQ(first.heard.positions[third.id()], third.position());
    third.hangUp();
    EXPECT_TRUE(runUntil([&] { return first.hasLost(third.id()) && second.hasLost(third.id()); }));
    EXPECT_EQ(log, (std::vector<std::string>{"join Pilot 1 (blue) from " + first.address,
                                             "join Pilot 2 (red) from " + second.address,
                                             "join Pilot 3 (blue) from " + third.address, "leave Pilot 3"}));
}

TEST_F(Server, OneSocketPlaysAgainWhileItsEarlierConnectionStands)
{
    open(0);
    TestClient& socket = join();
    const TestClient& again = join();
    socket.steer({});
    ASSERT_TRUE(runUntil([&] { return !socket.datagrams.empty(); }));
    const Vector3 start = again.position();
    socket.sendDatagram(messages::steeringFrame(again.qport(), {Quaternion(), control::up}));
    EXPECT_TRUE(runUntil([&] { return socket.heard.positions[again.id()].y > start.y; }));
    const Vector3 own = socket.position();
    socket.steer({Quaternion(), control::up});
    EXPECT_TRUE(runUntil([&] { return socket.position().y > own.y; })) << "the earlier one is heard no more";
}

TEST_F(Server, StopsWithoutLeavingWork)
{
    open(2);
    const TestClient& client = join();
    server->stop();
    EXPECT_TRUE(runUntil([&] { return client.serverHungUp; }));
    io.run_for(2s);
    EXPECT_TRUE(io.stopped());
}
