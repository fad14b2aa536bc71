// What the client sends while a player plays, and prints meanwhile.
#include "tests/end_to_end/GameSession.h"

#include <algorithm>
#include <regex>

TEST(Session, AnIdleClientSendsItsViewTwentyTimesASecond)
{
    GameSession game;
    const std::string place = "127.0.0.1:" + game.server.port();
    EXPECT_EQ(game.client->output().find("Attempting to connect to " + place + "\nConnected!\n"), 0U);
    game.join(lonelyShip());
    const Quaternion view = game.server.lastSteering().orientation;
    std::vector<peer::Datagram> all;
    peer::Clock::duration shortest =
        1h;  // time of 15 updates; a slow machine has it at times, a fast one always
    EXPECT_TRUE(peer::eventually(
        [&] {
            all = game.server.record().datagrams;
            for (std::size_t i = 15; i < all.size(); ++i) {
                shortest = std::min(shortest, all[i].arrival - all[i - 15].arrival);
            }
            return all.size() > 60 && shortest <= 1s;
        },
        30s));
    EXPECT_GT(shortest, 600ms);
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

    // the last whole frame counts, and half of the next does not
    game.server.sendTcp(messages::destroyFrame(GameSession::ownId) + peer::rawFrame(9, "half").substr(0, 5));
    game.server.closeTcp();
    EXPECT_EQ(game.client->end(), "status 0");
    EXPECT_TRUE(game.client->hasPrinted("Player Pilot logged out\n"));
    EXPECT_FALSE(game.client->hasPrinted("Unknown message type"));
    EXPECT_TRUE(game.client->hasPrinted("TCP connection CLOSED err:End of file\n"));
    EXPECT_TRUE(game.client->hasPrinted("Connection closed - exiting\n"));
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

    // A step of the pointer is lost if the client moves the pointer back at that instant. So there are many
    // steps.
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
