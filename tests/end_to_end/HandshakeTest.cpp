#include "tests/end_to_end/GameSession.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

using namespace std::chrono_literals;
using support::Clock;
using support::ScriptedServer;
using support::Steering;

constexpr std::size_t mostPerSecond = 20;
constexpr std::size_t leastPerSecond = 15;

// The updates in the second that starts at each of them; the last, unfinished second is left out.
std::vector<std::size_t> updatesPerSecond(const std::vector<ScriptedServer::Datagram>& all)
{
    std::vector<std::size_t> counts;
    for (auto first = all.begin(); first != all.end() && first->arrival + 1s <= all.back().arrival; ++first) {
        const auto inThatSecond = [&](const auto& d) { return d.arrival < first->arrival + 1s; };
        counts.push_back(static_cast<std::size_t>(std::count_if(first, all.end(), inThatSecond)));
    }
    return counts;
}

}  // namespace

TEST(Handshake, TheClientOnlyListensOnTcpAndPutsTheQportBeforeEveryLaterDatagram)
{
    GameSession game;
    const std::size_t before = game.server.datagrams().size();
    game.server.sendTcp(support::welcome(GameSession::ownId, 0x1BEEF));  // only 16 bits of it count
    ASSERT_TRUE(game.server.awaitUpdate([](const Steering& s) { return s.qport != 0; }));
    ASSERT_TRUE(support::eventually([&] { return game.server.datagrams().size() > before + 20; }));

    const std::vector<ScriptedServer::Datagram> all = game.server.datagrams();
    bool welcomed = false;
    for (std::size_t i = 0; i < all.size(); ++i) {
        const std::optional<Steering> steering = support::parseSteering(all[i].bytes);
        ASSERT_TRUE(steering) << "datagram " << i << " is no lone frame of a ClientUpdate";
        welcomed = welcomed || (i >= before && steering->qport != 0);
        EXPECT_EQ(steering->qport, welcomed ? 0xBEEF : 0) << "datagram " << i;
        EXPECT_EQ(steering->boosters, 0U) << "datagram " << i;
        EXPECT_NEAR(steering->orientation.length(), 1.0F, 1e-4F) << "datagram " << i;
    }
    EXPECT_EQ(game.server.tcpBytesReceived(), 0U);
    EXPECT_EQ(game.leave(), "status 0");
}

TEST(Handshake, AViewThatNobodyTurnsStaysAsItIs)
{
    GameSession game;
    game.join(lonelyShip());
    const Quaternion start = game.server.lastSteering().orientation;
    std::this_thread::sleep_for(1s);
    EXPECT_EQ(game.server.lastSteering().orientation, start);
}

// A slow machine sends less, but a client that keeps its pace shows it in some second; no second may have
// more.
TEST(Handshake, UpdatesArriveFifteenToTwentyTimesASecond)
{
    GameSession game;
    game.join(lonelyShip());
    const auto hasAFullSecond = [&] {
        const std::vector<std::size_t> counts = updatesPerSecond(game.server.datagrams());
        return counts.size() > 40 && *std::max_element(counts.begin(), counts.end()) >= leastPerSecond;
    };
    EXPECT_TRUE(support::eventually(hasAFullSecond, 30s));
    const std::vector<std::size_t> counts = updatesPerSecond(game.server.datagrams());
    EXPECT_LE(*std::max_element(counts.begin(), counts.end()), mostPerSecond + 1);  // one may arrive late
}

TEST(Handshake, DiagnosticsAreInTheFileWhileTheClientStillRuns)
{
    GameSession game;
    const std::string place = "127.0.0.1:" + game.server.port();
    EXPECT_EQ(game.client->output().find("Attempting to connect to " + place + "\nConnected!\n"), 0U);
    game.join(lonelyShip());
    game.server.sendTcp(support::destroy(GameSession::ownId));
    EXPECT_TRUE(support::eventually([&] { return game.client->hasPrinted("Player Rosa logged out\n"); }));
    EXPECT_TRUE(game.client->isRunning());
}
