#include "tests/server/ServerFixture.h"

#include <algorithm>

using namespace practice;

TEST_F(Server, IntroducesEveryShipAndSendsSnapshots)
{
    open(30);
    Client& client = join();
    EXPECT_NE(client.qport(), 0U);
    EXPECT_EQ(client.checker.positions.size(), 31U);
    EXPECT_EQ(client.checker.positions.count(client.id()), 1U);
    run(200ms);
    EXPECT_TRUE(client.datagrams.received.empty()) << "its address is unknown";
    client.steer({});
    ASSERT_TRUE(runUntil([&] { return !client.datagrams.received.empty(); }));
    run(2s);
    const auto& snapshots = client.checker.traffic.snapshots;
    ASSERT_NEAR(static_cast<double>(snapshots.size()), 40.0, 20.0);  // the machine may be busy
    EXPECT_EQ(snapshots.rbegin()->first - snapshots.begin()->first, 50U * (snapshots.size() - 1));
    EXPECT_GT(client.checker.received.updates.size(), 15 * snapshots.size());
}

TEST_F(Server, ReleasesTheControlsOfASilentClient)
{
    open(0);
    Client& client = join();
    client.steer({Quaternion(), control::fire});
    run(2500ms);
    const std::size_t shots = client.checker.received.infos.size() - 1;
    EXPECT_GE(shots, 3U);
    EXPECT_LE(shots, 6U);
}

TEST_F(Server, ClientsSeeEachOtherMoveFireComeAndGo)
{
    open(0);
    Client& first = join();
    Client& second = join();
    first.steer({});
    second.steer({Quaternion(), control::up | control::fire});
    const float start = second.position().y;
    EXPECT_TRUE(runUntil([&] {
        const auto& infos = first.checker.received.infos;
        return first.checker.positions[second.id()].y > start + 2.0F &&
               std::any_of(infos.begin(), infos.end(), [](const auto& i) { return i.objecttype() == 1; });
    }));
    Client& third = join();
    EXPECT_EQ(third.checker.positions[first.id()], first.position());
    EXPECT_EQ(first.checker.positions[third.id()], third.position());
    third.hangUp();
    EXPECT_TRUE(runUntil([&] { return first.hasLost(third.id()) && second.hasLost(third.id()); }));
    EXPECT_EQ(log, (std::vector<std::string>{"join Pilot 1 (blue) from " + first.address,
                                             "join Pilot 2 (red) from " + second.address,
                                             "join Pilot 3 (blue) from " + third.address, "leave Pilot 3"}));
}

TEST_F(Server, ASocketPlaysAgainBesideItsEarlierConnection)
{
    open(0);
    Client& socket = join();
    const Client& again = join();
    socket.steer({});
    ASSERT_TRUE(runUntil([&] { return !socket.datagrams.received.empty(); }));
    const Vector3 start = again.position();
    socket.sendDatagram(messages::steeringFrame(again.qport(), {Quaternion(), control::up}));
    EXPECT_TRUE(runUntil([&] { return socket.checker.positions[again.id()].y > start.y; }));
    const Vector3 own = socket.position();
    socket.steer({Quaternion(), control::up});
    EXPECT_TRUE(runUntil([&] { return socket.position().y > own.y; })) << "the earlier one has lost control";
}

TEST_F(Server, StopsWithoutLeavingWorkEvenTwice)
{
    open(2);
    const Client& client = play();
    server->stop();
    server->stop();
    EXPECT_TRUE(runUntil([&] { return client.serverHungUp(); }));
    io.run_for(2s);
    EXPECT_TRUE(io.stopped());
}
