// What a server may send that no honest one would: the client lives, goes on drawing and leaves as it should.
#include "tests/end_to_end/GameSession.h"

#include <gtest/gtest.h>

#include <limits>

using namespace std::chrono_literals;
using messages::ShipState;
using support::Pixel;

namespace {

std::string shotInfo(std::uint64_t id, bool blueTeam, Vector3 position, Vector3 velocity = {})
{
    return messages::infoFrame(messages::ShotState{id, blueTeam, position, velocity});
}

using Limits = std::numeric_limits<float>;
using Frames = std::vector<std::string>;

constexpr std::uint64_t own = GameSession::ownId;
constexpr std::uint64_t carriers = 0;
constexpr std::uint64_t hugeId = 0xFFFFFFFFFFFFFFF0U;

std::string named(std::uint64_t id, const std::string& name)
{
    ShipState ship = lonelyShip(id);
    ship.name = name;
    return messages::infoFrame(ship);
}

// Cuts of every kind of message, bodies under other type bytes, and noise.
Frames brokenFrames()
{
    Frames broken;
    for (const std::string& whole :
         {messages::infoFrame(lonelyShip()), shotInfo(21, true, {}), messages::updateFrame(own, 1, {}),
          messages::destroyFrame(1), messages::welcomeFrame({own}, 1)}) {
        for (std::size_t cut = 3; cut < whole.size(); ++cut) {
            broken.push_back(peer::rawFrame(static_cast<unsigned char>(whole[2]), whole.substr(3, cut - 3)));
        }
        for (const unsigned int type : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 255U}) {
            broken.push_back(peer::rawFrame(static_cast<unsigned char>(type), whole.substr(3)));
        }
    }
    unsigned int state = 12345;
    for (const std::size_t size : {1U, 64U, 1400U, 60000U}) {
        std::string noise(size, '\0');
        for (char& c : noise) {
            state = state * 1664525U + 1013904223U;
            c = static_cast<char>(state >> 24U);
        }
        broken.push_back(peer::rawFrame(1, noise));
    }
    return broken;
}

Frames strangeNumbers()
{
    Frames frames = {
        peer::rawFrame(2, "\x08\x07\x10\x01")};  // an update of the own ship without place and turn
    for (const float value : {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), Limits::max(),
                              Limits::lowest(), 1e30F, Limits::denorm_min()}) {
        ShipState ship = lonelyShip();
        ship.health = value;
        ship.position = Vector3(value, -value, value);
        frames.push_back(messages::infoFrame(ship));
        frames.push_back(shotInfo(31, true, ship.position, ship.position));
        ship.orientation = Quaternion(value, value, value, value);
        frames.push_back(messages::updateFrame(own, 2000, ship.position, ship.orientation));
        ship.position = {};
        frames.push_back(messages::infoFrame(ship) + messages::destroyFrame(31));
    }
    for (const std::uint32_t time :
         {5000U, 5000U, 4999U, 0U, 0xFFFFFFFFU, 0U, 1U, 0x80000000U, 0x7FFFFFFFU}) {
        frames.push_back(
            messages::updateFrame(own, time, Vector3(0, 0, 3000.0F + static_cast<float>(time % 7U))));
    }
    return frames;
}

// The carriers as players, as a shot, as the own ship; names that are long, formats or none; ids over 2^63;
// objects that go twice, come back at once or change their type.
const Frames twistedObjects = {
    named(carriers, "carrier"),
    messages::updateFrame(carriers, 1, {Limits::quiet_NaN(), 0, 0}),
    shotInfo(carriers, true, {}),
    messages::destroyFrame(carriers) + messages::destroyFrame(carriers),
    messages::welcomeFrame({carriers}, 1) + named(carriers, "me"),
    messages::welcomeFrame({own}, 1) + named(41, std::string(60000, 'n')),
    named(42, "%s%s%n%500000d") + named(43, std::string("\0\x07%s%n\xFF\xC0", 8)) + named(own, ""),
    messages::destroyFrame(41) + messages::destroyFrame(42) + messages::destroyFrame(43),
    named(hugeId, "huge") + messages::updateFrame(hugeId, 1, {}) +
        messages::welcomeFrame({hugeId}, 0xFFFFFFFFU),
    messages::destroyFrame(hugeId) + messages::destroyFrame(hugeId) + messages::welcomeFrame({own}, 1),
    shotInfo(51, true, {}) + messages::destroyFrame(51) + messages::destroyFrame(51) +
        shotInfo(51, false, {}),
    named(52, "x") + messages::destroyFrame(52) + named(52, "y") + messages::destroyFrame(52),
    messages::destroyFrame(own) + messages::destroyFrame(own) + messages::infoFrame(lonelyShip()),
    shotInfo(61, true, {}) + named(61, "shot") + named(62, "ship") + shotInfo(62, true, {}),
    messages::destroyFrame(61) + messages::destroyFrame(62)};

// The client draws between any two frames, unless they are very many.
void attack(GameSession& game, const Frames& frames)
{
    for (const std::string& bytes : frames) {
        game.server.sendTcp(bytes);
        game.server.sendUdp(bytes);
        game.server.sendUdp(bytes.substr(0, bytes.size() / 2));  // a stream would wait for the rest
        game.server.sendUdp(bytes.substr(2));
        std::this_thread::sleep_for(frames.size() > 100 ? 1ms : 20ms);
    }
    std::this_thread::sleep_for(200ms);
    const std::size_t before = game.server.record().datagrams.size();
    ASSERT_TRUE(peer::eventually([&] { return game.server.record().datagrams.size() > before; }))
        << game.client->end(1s);
}

}  // namespace

TEST(HostileSession, TheClientLivesThroughEveryAttackDrawsAndLeavesWithStatusZero)
{
    GameSession game;
    game.join(lonelyShip());
    for (const Frames& frames : {twistedObjects, strangeNumbers(), brokenFrames()}) {
        ASSERT_NO_FATAL_FAILURE(attack(game, frames));
    }
    game.server.sendTcp(std::string(2, '\0') +
                        messages::destroyFrame(own));  // what follows a length of 0 is never read

    // A new own ship and a friend ahead of it are on the screen as if nothing had happened.
    game.server.sendUdp(messages::infoFrame(lonelyShip(71)) + messages::welcomeFrame({71}, 1));
    const support::Picture alone = game.soon();
    ShipState friendly = lonelyShip(72);
    friendly.blueTeam = true;
    friendly.position = game.inView(-4, 3, 15);
    game.server.sendUdp(messages::infoFrame(friendly));
    const support::Picture both = game.soon();
    const support::Region place = GameSession::onScreen(-4, 3, 15);
    EXPECT_GT(both.count(place, &Pixel::isBluish), alone.count(place, &Pixel::isBluish) + 60);
    EXPECT_GT(both.count({0, 50, 150, 24}, &Pixel::isPureGreen), 40) << "the health line";

    EXPECT_EQ(game.leave(), "status 0");
    for (const char* report : {"AddressSanitizer", "runtime error"}) {
        EXPECT_FALSE(game.client->hasPrinted(report));
    }
}
