// Faults of the machine and of the connection under the real client. tools/faults/Faults.cpp makes calls fail
// or stall for five seconds, and sets the clock.
#include "tests/end_to_end/GameSession.h"

#include <csignal>
#include <cstdlib>

namespace {

// For the programs that start from now on.
void plan(const std::string& fault)
{
    setenv("LD_PRELOAD", VANTOR_FAULTS, 1);
    setenv("VANTOR_FAULT", fault.c_str(), 1);
}

// What happens in a game.
using Act = std::function<void(GameSession&)>;

Act halt(std::chrono::seconds time)
{
    return [time](GameSession& game) {
        game.client->signal(SIGSTOP);
        std::this_thread::sleep_for(time);
        game.client->signal(SIGCONT);
    };
}

// Sends a frame that lacks so many bytes, then a reset.
Act reset(std::size_t missing)
{
    return [=](GameSession& game) {
        std::string frame =
            peer::rawFrame(3, {8, GameSession::ownId, 0x78, 1});  // the last two may be missing
        game.server.sendTcp(frame.substr(0, frame.size() - missing));
        peer::eventually([&] { return game.client->hasPrinted("logged out"); }, missing == 0 ? 5s : 200ms);
        game.server.closeTcp(true);
    };
}

}  // namespace

TEST(Faults, AStartEndsWithAMessageAndStatusOne)
{
    const std::pair<std::string, std::string> cases[] = {
        {"getaddrinfo 1 stall", "No UDP packet received in 3 - exiting"},  // a slow resolver
        {"connect 1 stall", "No UDP packet received in 3 - exiting"},      // nobody answers
        {"new 1 fail", "Out of memory - exiting\n"}};
    for (const auto& [fault, text] : cases) {
        plan(fault);
        const peer::ScriptedServer server;
        support::Process client(support::clientCommand("", {"--port", server.port(), "--udp-timeout", "3"}));
        EXPECT_EQ(client.end(), "status 1") << fault;
        EXPECT_TRUE(client.hasPrinted(text)) << client.output();
    }
}

TEST(Faults, AGameGoesOnOrEndsWithAMessageAndAStatus)
{
    const auto wait = [](GameSession&) { std::this_thread::sleep_for(7s); };
    const std::string silence = "No UDP packet received in 10 - exiting",
                      farewell = "Player Pilot logged out\n";
    const std::tuple<std::string, Act, std::string, std::string> cases[] = {
        {"sendto 15 stall", &GameSession::flood, "status 0", ""},    // on the main thread
        {"recvfrom 15 stall", &GameSession::flood, "status 0", ""},  // on the network thread
        {"glGenLists 1 fail 99999", &GameSession::flood, "status 0", ""},
        {"glGenTextures 1 fail 99999", &GameSession::flood, "status 0", ""},
        {"gettimeofday 100 clock 999999999", wait, "status 0", ""},
        {"", halt(4s), "status 0", ""},
        {"", halt(12s), "status 1", silence},
        {"recvfrom 15 ENOMEM", &GameSession::flood, "status 1", silence},
        {"new 4000 fail", &GameSession::flood, "status 1", " - exiting\n"},
        {"", reset(2), "status 0", "CLOSED err:Connection reset by peer\n"},
        {"", reset(0), "status 0", farewell}};
    for (const auto& [fault, act, end, text] : cases) {
        SCOPED_TRACE(fault + text);
        plan(fault);
        GameSession game;
        game.join(lonelyShip());
        act(game);
        if (text.empty()) {
            const std::size_t before = game.server.record().datagrams.size();
            EXPECT_TRUE(peer::eventually([&] { return game.server.record().datagrams.size() > before + 9; }));
            const Vector3 viewer = {0, 500, 3000};  // away from what a flood left behind
            game.server.sendUdp(messages::infoFrame(shipBehind(viewer)) + parade(viewer));
            if (fault.find("gl") != 0) {
                game.display.expectImage("fighters", "620x190+90+190");
            }
            game.client->signal(SIGTERM);
        }
        EXPECT_EQ(game.client->end(), end);
        EXPECT_TRUE(fault.empty() || game.client->hasPrinted("injected: "));
        EXPECT_TRUE(game.client->hasPrinted(text)) << text;
        EXPECT_EQ(game.client->hasPrinted(farewell), text == farewell) << "half a frame counts";
    }
}
