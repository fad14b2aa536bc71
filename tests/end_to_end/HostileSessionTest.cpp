// What a server may send that no honest one would: the client lives, goes on drawing and leaves as it should.
#include "tests/end_to_end/GameSession.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace {

using namespace std::chrono_literals;
using support::destroy;
using support::frame;
using support::Ship;
using support::shipInfo;
using support::shotInfo;
using support::update;
using support::welcome;

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float most = std::numeric_limits<float>::max();
constexpr std::uint64_t own = GameSession::ownId;
constexpr std::uint64_t carriers = 0;
constexpr std::uint64_t hugeId = 0xFFFFFFFFFFFFFFF0U;

enum class Over
{
    tcp,
    udp,
    both
};

struct Attack
{
    std::string name;
    std::vector<std::string> frames;  ///< each is sent for itself
    Over over = Over::both;
};

Ship ownShip(Vector3 position, float health, Quaternion orientation = {})
{
    Ship ship = lonelyShip();
    ship.position = position;
    ship.health = health;
    ship.orientation = orientation;
    return ship;
}

Ship named(std::uint64_t id, std::string name)
{
    Ship ship = lonelyShip();
    ship.id = id;
    ship.name = std::move(name);
    return ship;
}

// Every cut of every kind of message, and each one's body under every type byte.
std::vector<std::string> brokenFrames()
{
    std::vector<std::string> broken;
    for (const std::string& whole :
         {shipInfo(lonelyShip()), shotInfo(21, true, {}), update(own, 1, {}), destroy(1), welcome(own, 1)}) {
        const std::string body = whole.substr(3);
        for (std::size_t cut = 0; cut < body.size(); ++cut) {
            broken.push_back(frame(static_cast<unsigned char>(whole[2]), body.substr(0, cut)));
        }
        for (int type : {0, 1, 2, 3, 4, 5, 6, 7, 127, 128, 255}) {
            if (type != whole[2]) {
                broken.push_back(frame(static_cast<unsigned char>(type), body));
            }
        }
    }
    return broken;
}

// Datagrams that end inside a frame, and noise; a stream would wait for the rest.
std::vector<std::string> brokenDatagrams()
{
    const std::string whole = shipInfo(lonelyShip()) + update(own, 1, {});
    std::vector<std::string> broken;
    for (std::size_t cut = 0; cut < whole.size(); ++cut) {
        broken.push_back(whole.substr(0, cut));
    }
    unsigned int state = 12345;
    for (std::size_t size : {1U, 2U, 3U, 64U, 1400U, 9000U, 60000U}) {
        std::string noise(size, '\0');
        for (char& c : noise) {
            state = state * 1664525U + 1013904223U;
            c = static_cast<char>(state >> 24U);
        }
        broken.push_back(noise);
        broken.push_back(frame(1, noise));
    }
    broken.emplace_back(2, '\0');
    return broken;
}

std::vector<Attack> attacks()
{
    std::vector<std::string> ownShipStates;
    for (float value :
         {nan, infinity, -infinity, most, -most, 1e30F, std::numeric_limits<float>::denorm_min()}) {
        const Vector3 place(value, -value, value);
        const Quaternion turn(value, value, value, value);
        ownShipStates.push_back(shipInfo(ownShip(place, value)));
        ownShipStates.push_back(shipInfo(ownShip({}, value, turn)));
        ownShipStates.push_back(update(own, 2000, place, turn));
        ownShipStates.push_back(shotInfo(31, true, place, place));
        ownShipStates.push_back(destroy(31));
    }
    ownShipStates.push_back(
        frame(2, "\x08\x07\x10\x01"));  // an update of the own ship with neither place nor turn
    std::vector<std::string> jumpingTimes;
    for (std::uint32_t time : {5000U, 5000U, 4999U, 0U, 0xFFFFFFFFU, 0U, 1U, 0x80000000U, 0x7FFFFFFFU}) {
        jumpingTimes.push_back(update(own, time, Vector3(0, 0, 3000.0F + static_cast<float>(time % 7U))));
    }
    Ship noName = named(own, "");
    const std::string bell("\0\x07%s%n\xFF\xC0", 8);
    return {
        {"player data for the carriers",
         {shipInfo(named(carriers, "carrier")), update(carriers, 1, {nan, nan, nan})}},
        {"a shot for the carriers' id", {shotInfo(carriers, true, {}), destroy(carriers), destroy(carriers)}},
        {"the carriers as the own ship",
         {welcome(carriers, 1), shipInfo(named(carriers, "me")), welcome(own, 1)}},
        {"names of 60,000 bytes", {shipInfo(named(41, std::string(60000, 'n'))), destroy(41)}},
        {"names that are formats",
         {shipInfo(named(42, "%s%s%n%500000d")), shipInfo(named(43, bell)), destroy(42) + destroy(43),
          shipInfo(noName)}},
        {"numbers that are none", ownShipStates},
        {"times that jump", jumpingTimes},
        {"ids over 2^63",
         {shipInfo(named(hugeId, "huge")), update(hugeId, 1, {}), welcome(hugeId, 0xFFFFFFFFU),
          destroy(hugeId), destroy(hugeId), welcome(own, 1)}},
        {"twice gone, then back",
         {shotInfo(51, true, {}) + destroy(51) + destroy(51) + shotInfo(51, false, {}),
          shipInfo(named(52, "x")) + destroy(52) + shipInfo(named(52, "y")) + destroy(52),
          destroy(own) + destroy(own) + shipInfo(lonelyShip()), shipInfo(lonelyShip())}},
        {"one id, two types",
         {shotInfo(61, true, {}) + shipInfo(named(61, "shot")), destroy(61),
          shipInfo(named(62, "ship")) + shotInfo(62, true, {}), destroy(62)}},
        {"broken frames", brokenFrames()},
        {"broken datagrams", brokenDatagrams(), Over::udp},
        // The last over TCP: what follows a length of 0 in a stream is never read.
        {"a length of zero", {std::string(2, '\0') + shipInfo(lonelyShip())}, Over::tcp},
    };
}

// Slowly enough that the client draws between most of them, unless they are very many.
void send(GameSession& game, const Attack& attack)
{
    const auto pause = attack.frames.size() > 100 ? 1ms : 20ms;
    for (const std::string& bytes : attack.frames) {
        if (attack.over != Over::udp) {
            game.server.sendTcp(bytes);
        }
        if (attack.over != Over::tcp) {
            game.server.sendUdp(bytes);
        }
        std::this_thread::sleep_for(pause);
    }
}

bool isAlive(GameSession& game)
{
    return game.server.awaitUpdate([](const support::Steering&) { return true; });
}

}  // namespace

TEST(HostileSession, TheClientLivesThroughEveryAttackDrawsAndLeavesWithStatusZero)
{
    GameSession game;
    game.join(lonelyShip());
    for (const Attack& attack : attacks()) {
        SCOPED_TRACE(attack.name);
        send(game, attack);
        std::this_thread::sleep_for(200ms);
        ASSERT_TRUE(isAlive(game)) << game.client->end(1s);
    }

    // A new own ship and a friend ahead of it are on the screen as if nothing had happened.
    Ship fresh = named(71, "fresh");
    game.server.sendUdp(shipInfo(fresh) + welcome(71, 1));
    std::this_thread::sleep_for(500ms);
    const support::Picture alone = game.display.screenshot();
    Ship friendly = named(72, "friend");
    friendly.blueTeam = true;
    friendly.position = game.inView(-4, 3, 15);
    game.server.sendUdp(shipInfo(friendly));
    std::this_thread::sleep_for(500ms);
    const support::Picture both = game.display.screenshot();
    const support::Region place = GameSession::onScreen(-4, 3, 15, 25);
    EXPECT_GT(both.count(place, support::isBluish), alone.count(place, support::isBluish) + 60);
    EXPECT_GT(both.count({0, 50, 150, 24}, support::isPureGreen), 40) << "the health line";

    EXPECT_EQ(game.leave(), "status 0");
    for (const char* report : {"ERROR: AddressSanitizer", "runtime error", "AddressSanitizer:DEADLYSIGNAL"}) {
        EXPECT_FALSE(game.client->hasPrinted(report));
    }
}
