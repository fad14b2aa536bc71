#include "tests/end_to_end/GameSession.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace std::chrono_literals;

namespace {

using Datagrams = std::vector<peer::Datagram>;

// The most datagrams in any second that starts at one of them.
long mostPerSecond(const Datagrams& all)
{
    long most = 0;
    for (auto first = all.begin(); first != all.end(); ++first) {
        const auto isInThatSecond = [&](const auto& d) { return d.arrival < first->arrival + 1s; };
        most = std::max<long>(most, std::count_if(first, all.end(), isInThatSecond));
    }
    return most;
}

}  // namespace

TEST(Handshake, EveryDatagramAfterTheWelcomeHasItsQport)
{
    GameSession game;
    game.server.sendTcp(messages::welcomeFrame({GameSession::ownId}, 0x1BEEF));  // only 16 bits of it count
    ASSERT_TRUE(game.awaitUpdate([](const auto& update) { return update.qport != 0; }));
    const std::size_t before = game.server.record().datagrams.size();
    ASSERT_TRUE(peer::eventually([&] { return game.server.record().datagrams.size() > before + 20; }));

    int qport = 0;
    const auto record = game.server.record();
    for (const peer::Datagram& datagram : record.datagrams) {
        const std::optional<peer::SteeringDatagram> update = peer::parseSteering(datagram.bytes);
        ASSERT_TRUE(update) << "no lone frame of a ClientUpdate";
        qport = update->qport == 0 ? qport : 0xBEEF;
        EXPECT_EQ(update->qport, qport);
        EXPECT_EQ(update->controls, 0U);
        EXPECT_NEAR(update->orientation.length(), 1.0F, 1e-4F);
    }
    EXPECT_EQ(record.tcpBytes, 0U) << "the client only listens on TCP";
}

// A slow machine sends less, but a client that keeps its pace shows it in some second; no second may have
// more.
TEST(Handshake, UpdatesComeFifteenToTwentyTimesASecond)
{
    GameSession game;
    game.join(lonelyShip());
    const Quaternion start = game.server.lastSteering().orientation;
    Datagrams all;
    EXPECT_TRUE(peer::eventually(
        [&] {
            all = game.server.record().datagrams;
            return all.back().arrival > all.front().arrival + 3s && mostPerSecond(all) >= 15;
        },
        30s));
    EXPECT_LE(mostPerSecond(all), 21);  // one may arrive late
    EXPECT_EQ(game.server.lastSteering().orientation, start) << "the view stays";
}

TEST(Handshake, DiagnosticsAreThereWhileTheClientRuns)
{
    GameSession game;
    const std::string place = "127.0.0.1:" + game.server.port();
    EXPECT_EQ(game.client->output().find("Attempting to connect to " + place + "\nConnected!\n"), 0U);
    game.join(lonelyShip());
    game.server.sendTcp(messages::destroyFrame(GameSession::ownId));
    EXPECT_TRUE(peer::eventually([&] { return game.client->hasPrinted("Player Pilot logged out\n"); }));
    EXPECT_TRUE(game.client->isRunning());
}
