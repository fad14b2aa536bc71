// What the client sends while a player plays, and prints meanwhile.
#include "tests/end_to_end/GameSession.h"

#include <algorithm>
#include <regex>

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

TEST(Session, AnIdleClientSendsItsViewTwentyTimesASecond)
{
    GameSession game;
    const std::string place = "127.0.0.1:" + game.server.port();
    EXPECT_EQ(game.client->output().find("Attempting to connect to " + place + "\nConnected!\n"), 0U);
    game.join(lonelyShip());
    const Quaternion view = game.server.lastSteering().orientation;
    Datagrams all;
    // A slow machine sends less, but a client that keeps its pace shows it in some second; no second may have
    // more.
    EXPECT_TRUE(peer::eventually(
        [&] {
            all = game.server.record().datagrams;
            return all.back().arrival > all.front().arrival + 3s && mostPerSecond(all) >= 15;
        },
        30s));
    EXPECT_LE(mostPerSecond(all), 21);  // one may arrive late
    EXPECT_EQ(game.server.lastSteering().orientation, view);

    int qport = 0;  // until the welcome
    for (const peer::Datagram& datagram : all) {
        const std::optional<peer::SteeringDatagram> update = peer::parseSteering(datagram.bytes);
        ASSERT_TRUE(update) << "no lone frame of a ClientUpdate";
        qport = update->qport == 0 ? qport : GameSession::qport;
        EXPECT_EQ(update->qport, qport);
        EXPECT_EQ(update->controls, 0U);
        EXPECT_NEAR(update->orientation.length(), 1.0F, 1e-4F);
    }
    EXPECT_EQ(game.server.record().tcpBytes, 0U) << "the client only listens on TCP";

    game.server.closeTcp();
    EXPECT_EQ(game.client->end(), "status 0");
    EXPECT_TRUE(
        game.client->hasPrinted("TCP connection CLOSED err:End of file\nConnection closed - exiting\n"));
}

TEST(Session, KeysAndTheMouseSteer)
{
    const std::pair<std::string, std::uint32_t> cases[] = {
        {"keydown w", 1},
        {"keydown s", 2},
        {"keydown d", 4},
        {"keydown a", 8},
        {"keydown space", 16},
        {"keydown c", 32},
        {"keydown w keydown s keydown d keydown a keydown space keydown c mousedown 1", 0x4000003F}};
    GameSession game;
    game.join(lonelyShip());
    for (const auto& [press, bits] : cases) {
        SCOPED_TRACE(press);
        const auto awaitBits = [&](std::uint32_t wanted) {
            return game.awaitUpdate([=](const auto& update) { return update.controls == wanted; });
        };
        game.display.xdotool(press);
        std::this_thread::sleep_for(100ms);
        EXPECT_TRUE(awaitBits(bits));
        game.display.xdotool(std::regex_replace(press, std::regex("down"), "up"));
        EXPECT_TRUE(awaitBits(0));
    }

    // A step of the pointer is lost when it falls into the instant in which the client sets it back: so there
    // are many steps.
    const Quaternion start = game.server.lastSteering().orientation;
    for (int step = 0; step < 20; ++step) {
        game.display.xdotool("mousemove_relative 8 0 sleep 0.02");
    }
    std::this_thread::sleep_for(300ms);
    const Quaternion turn = ~start * game.server.lastSteering().orientation;
    // the sine of half the angle, to the right: 8 pixels at 0.005 radians make 0.389 at most
    EXPECT_NEAR(turn.y, -0.34F, 0.08F);
    EXPECT_NEAR(turn.w, 0.94F, 0.03F);

    game.server.sendTcp(messages::destroyFrame(GameSession::ownId));
    EXPECT_TRUE(peer::eventually([&] { return game.client->hasPrinted("Player Pilot logged out\n"); }));
    game.display.xdotool("keydown Escape");
    EXPECT_EQ(game.client->end(), "status 0");
}
