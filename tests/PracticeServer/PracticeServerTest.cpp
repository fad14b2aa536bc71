#include "PracticeServer/PracticeServer.h"

#include "tests/PracticeServer/ServerFixture.h"

#include <boost/system/system_error.hpp>

#include <algorithm>
#include <map>
#include <set>

using namespace practice;

TEST_F(Server, WelcomesAClientFirstAndThenTellsOfEveryShip)
{
    open(4);
    const TestClient& client = join();
    EXPECT_EQ(client.heard.types[0], MessageTypes::WELCOME);
    EXPECT_GE(client.id(), Match::firstId);
    EXPECT_NE(client.heard.welcome.qport(), 0U);
    EXPECT_LT(client.heard.welcome.qport(), 65536U);
    std::set<std::uint64_t> ships;
    for (const Vantor::ObjectInfo& info : client.heard.infos) {
        if (info.objecttype() == 0) {
            ships.insert(info.id());
            EXPECT_TRUE(info.playerdata().has_blueteam() && info.playerdata().has_name());
            EXPECT_TRUE(info.playerdata().has_redteamscore() && info.playerdata().has_blueteamscore());
        }
    }
    EXPECT_EQ(ships.size(), 5U);
    EXPECT_EQ(ships.count(client.id()), 1U);
}

TEST_F(Server, SendsSnapshotsTwentyTimesASecondOnceItKnowsTheAddress)
{
    open(30);
    TestClient& client = join();
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
    EXPECT_NEAR(static_cast<double>(snapshots.size()), 40.0, 12.0);  // the machine may be busy
    for (const auto& [timestamp, ships] : snapshots) {
        EXPECT_EQ(timestamp % 50U, 0U);
        EXPECT_GT(ships.size(), 15U);
    }
}

TEST_F(Server, AClientThatFallsSilentLetsGoOfTheControls)
{
    open(0);
    TestClient& client = join();
    client.steer({Quaternion(), control::fire});
    run(2500ms);
    const auto& infos = client.heard.infos;
    const auto shots =
        std::count_if(infos.begin(), infos.end(), [](const auto& info) { return info.objecttype() == 1; });
    EXPECT_GE(shots, 3);
    EXPECT_LE(shots, 6);
}

TEST_F(Server, TwoClientsSeeEachOtherMoveAndFireWhileAThirdComesAndGoes)
{
    open(0);
    TestClient& first = join();
    TestClient& second = join();
    EXPECT_NE(first.qport(), second.qport());
    first.steer({});
    second.steer({Quaternion(), control::up | control::fire});
    const float start = second.position().y;
    const auto shotNear = [](const TestClient& witness, const Vector3& place) {
        return std::any_of(witness.heard.infos.begin(), witness.heard.infos.end(), [&](const auto& info) {
            const Vector3 at(info.position().x(), info.position().y(), info.position().z());
            return info.objecttype() == 1 && (at - place).length() < 20.0F;
        });
    };
    EXPECT_TRUE(runUntil([&] {
        return first.heard.positionOf(second.id()).y > start + 2.0F && shotNear(first, second.position());
    }));
    TestClient& third = join();
    EXPECT_EQ(third.heard.positionOf(first.id()), first.position());
    EXPECT_EQ(first.heard.positionOf(third.id()), third.position());
    third.hangUp();
    const auto gone = [&](const TestClient& witness) {
        const auto& destroys = witness.heard.destroys;
        return std::any_of(destroys.begin(), destroys.end(),
                           [&](const auto& d) { return d.id() == third.id(); });
    };
    EXPECT_TRUE(runUntil([&] { return gone(first) && gone(second); }));
    EXPECT_EQ(log,
              (std::vector<std::string>{"join Pilot 1 (blue) from " + first.address(),
                                        "join Pilot 2 (red) from " + second.address(),
                                        "join Pilot 3 (blue) from " + third.address(), "leave Pilot 3"}));
}

TEST_F(Server, OneSocketPlaysAgainWhileItsEarlierConnectionStands)
{
    open(0);
    TestClient& socket = join();
    const TestClient& again = join();
    socket.steer({});
    ASSERT_TRUE(runUntil([&] { return !socket.datagrams.empty(); }));
    const Vector3 start = again.position();
    socket.sendDatagram(steeringFrame(again.qport(), {Quaternion(), control::up}));
    EXPECT_TRUE(runUntil([&] { return socket.heard.positionOf(again.id()).y > start.y; }));
    const Vector3 own = socket.position();
    socket.steer({Quaternion(), control::up});
    EXPECT_TRUE(runUntil([&] { return socket.position().y > own.y; })) << "the earlier one is heard no more";
}

TEST_F(Server, KeepsItsPortAndStopLeavesNoWork)
{
    open(2);
    const TestClient& client = join();
    config.port = server->port();
    EXPECT_THROW(PracticeServer(io, config), boost::system::system_error);
    config.port = 0;
    config.bind = boost::asio::ip::make_address_v4("192.0.2.1");  // reserved for documentation: nobody's
    EXPECT_THROW(PracticeServer(io, config), boost::system::system_error);
    server->stop();
    EXPECT_TRUE(runUntil([&] { return client.serverHungUp; }));
    io.run_for(2s);
    EXPECT_TRUE(io.stopped());
    EXPECT_NE(server->timing().find(" ms behind"), std::string::npos);
}
