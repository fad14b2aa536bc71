// A real client among lies over both transports: it lives, goes on drawing and leaves as it should. What each
// lie does to the scene is tested in tests/hostile.
#include "tests/end_to_end/GameSession.h"
#include "tests/support/GoldenImage.h"

#include <gtest/gtest.h>

#include <limits>

using namespace std::chrono_literals;
using messages::ShipState;
using messages::ShotState;

namespace {

using Limits = std::numeric_limits<float>;
using Frames = std::vector<std::string>;

constexpr std::uint64_t own = GameSession::ownId;
constexpr std::uint64_t hugeId = 0xFFFFFFFFFFFFFFF0U;

std::string named(std::uint64_t id, const std::string& name)
{
    ShipState ship = lonelyShip(id);
    ship.name = name;
    return messages::infoFrame(ship);
}

// Numbers that reach the drawing and the texts.
Frames strangeNumbers()
{
    Frames frames = {peer::rawFrame(2, "\x08\x07\x10\x01")};  // an update of the own ship without a pose
    for (const float value : {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), Limits::max(),
                              Limits::lowest(), 1e30F, Limits::denorm_min()}) {
        ShipState ship = lonelyShip();
        ship.health = value;
        ship.position = Vector3(value, -value, value);
        frames.push_back(messages::infoFrame(ship));
        frames.push_back(messages::infoFrame(ShotState{31, true, ship.position, ship.position}));
        ship.orientation = Quaternion(value, value, value, value);
        frames.push_back(messages::updateFrame(own, 2000, ship.position, ship.orientation));
        ship.position = {};
        frames.push_back(messages::infoFrame(ship) + messages::destroyFrame(31));
    }
    return frames;
}

// The carriers as players and as the own ship; names that are long, formats or none; ids over 2^63; types
// that are none; the own ship gone and back.
const Frames twistedObjects = {
    named(0, "carrier") + messages::destroyFrame(0) + messages::destroyFrame(0),
    messages::welcomeFrame({0}, 1) + named(0, "me"),
    messages::welcomeFrame({own}, 1) + named(41, std::string(60000, 'n')),
    named(42, "%s%s%n%500000d") + named(43, std::string("\0\x07%s%n\xFF\xC0", 8)) + named(own, ""),
    messages::destroyFrame(41) + messages::destroyFrame(42) + messages::destroyFrame(43),
    named(hugeId, "huge") + messages::updateFrame(hugeId, 1, {}) +
        messages::welcomeFrame({hugeId}, 0xFFFFFFFFU),
    messages::destroyFrame(hugeId) + messages::destroyFrame(hugeId) + messages::welcomeFrame({own}, 1),
    peer::rawFrame(1, std::string(60000, '\xEE')) + peer::rawFrame(0, "body") + peer::rawFrame(255, ""),
    messages::destroyFrame(own) + messages::destroyFrame(own) + messages::infoFrame(lonelyShip())};

// The client draws between any two frames.
void attack(GameSession& game, const Frames& frames)
{
    for (const std::string& bytes : frames) {
        game.server.sendTcp(bytes);
        game.server.sendUdp(bytes);
        game.server.sendUdp(bytes.substr(0, bytes.size() / 2));  // a stream would wait for the rest
        game.server.sendUdp(bytes.substr(2));
        std::this_thread::sleep_for(20ms);
    }
    std::this_thread::sleep_for(200ms);
    const std::size_t before = game.server.record().datagrams.size();
    ASSERT_TRUE(peer::eventually([&] { return game.server.record().datagrams.size() > before; }))
        << game.client->end(1s);
}

}  // namespace

TEST(HostileSession, TheClientLivesAndDrawsOn)
{
    GameSession game;
    game.join(lonelyShip());
    ASSERT_NO_FATAL_FAILURE(attack(game, twistedObjects));
    ASSERT_NO_FATAL_FAILURE(attack(game, strangeNumbers()));
    game.server.sendTcp(std::string(2, '\0') +
                        messages::destroyFrame(own));  // nothing behind a length of 0 is read

    const Vector3 viewer = {0, 500, 3000};  // away from what the lies left behind
    game.server.sendUdp(messages::infoFrame(shipBehind(viewer, 71)) + messages::welcomeFrame({71}, 1));
    for (const ShipState& ship : parade(viewer)) {
        game.server.sendUdp(messages::infoFrame(ship));
    }
    expectImage(game.display, {"fighters", "620x190+90+190"});

    EXPECT_EQ(game.leave(), "status 0");
    for (const char* report : {"AddressSanitizer", "runtime error"}) {
        EXPECT_FALSE(game.client->hasPrinted(report));
    }
}
