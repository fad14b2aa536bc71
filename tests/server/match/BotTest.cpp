#include "server/match/Hull.h"
#include "server/match/Match.h"
#include "server/net/MatchBroadcast.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <deque>
#include <functional>
#include <map>
#include <vector>

using namespace practice;

namespace {

constexpr int second = Match::stepsPerSecond;
constexpr std::uint32_t seeds = 40;
constexpr float never = 1e6F;  ///< seconds

void run(Match& match, unsigned steps)
{
    for (unsigned i = 0; i < steps; ++i) {
        match.step();
    }
}

Match botMatch(const MatchSettings& settings)
{
    Match match(settings);
    for (int i = 0; i < 16; ++i) {
        match.addBot();
    }
    return match;
}

/// A scripted human among bots, and what it sees and suffers. Two of three join a match that is under way.
struct Flight : MatchObserver
{
    using Script = std::function<ShipInput(const Flight&)>;

    Match match;
    const Ship* self;
    float time = 0.0F;         ///< seconds since the human joined, like all the others
    float enemyInView = 0.0F;  ///< in the first 15
    float firstKill = never;
    float firstDamage = never;
    std::vector<float> unseen;  ///< for each hit: seconds since its shooter was in view
    std::map<ObjectId, float> lastSeen;
    ObjectId shooter = noObject;
    float health = Rules().fullHealth;

    Flight(std::uint32_t seed, Difficulty difficulty, float duration, const Script& script)
        : match(botMatch({seed, difficulty, General::FIXED, 0, 0}))
    {
        run(match, seed % 3 * 20 * second);
        self = match.findShip(match.addHuman());
        match.addObserver(this);
        while (time < duration) {
            match.setInput(self->id, script(*this));
            match.step();
            time += Match::stepTime;
            look();
        }
    }

    /// The client's picture is 60 degrees high and 4:3. Its camera flies behind the ship and looks where the
    /// mouse points, not where the nose points.
    bool isInView(const Ship& ship, float range) const
    {
        const Vector3 camera = self->position + self->orientation.rotate({0.0F, 2.0F, -5.0F});
        const Vector3 sight = ship.position - camera;
        const Vector3 local = (~self->input.orientation).rotate(sight);
        const float halfHeight = local.z * 0.57735F;
        return ship.alive && ship.team != self->team && local.z > 1.0F && local.length() < range &&
               std::fabs(local.y) < halfHeight && std::fabs(local.x) < halfHeight * 4.0F / 3.0F &&
               !hullContact(camera, sight);
    }

    void look()
    {
        bool sees = false;
        for (const Ship& ship : match.allShips()) {
            if (isInView(ship, 100.0F)) {  // 20 pixels long
                lastSeen[ship.id] = time;
                sees = true;
            }
        }
        enemyInView += sees && time < 15.0F ? Match::stepTime : 0.0F;
        firstKill = self->score > 0 ? std::min(firstKill, time) : firstKill;
    }

    void shotEnded(const Shot& shot) override { shooter = shot.shooter; }
    void shipDataChanged(const Ship& ship) override { noteDamage(ship); }
    void shipExploded(const Ship& ship) override { noteDamage(ship); }
    void noteDamage(const Ship& ship)
    {
        if (&ship != self || ship.health >= health) {
            return;
        }
        health = ship.health;
        unseen.push_back(lastSeen.count(shooter) != 0 ? time - lastSeen[shooter] : never);
        firstDamage = std::min(firstDamage, time);
    }
    void shipAppeared(const Ship& ship) override { health = &ship == self ? ship.health : health; }
    void shipVanished(const Ship& /*ship*/) override {}
    void shotFired(const Shot& /*shot*/) override {}
};

/// Turns by at most 90 degrees a second towards the place where it saw the nearest enemy 250 ms ago, without
/// leading. Aims 2 degrees off, fires when it points there. Seeing nobody, it circles to the left.
class AverageHuman
{
public:
    ShipInput operator()(const Flight& flight)
    {
        seen.push_back(wayToNearest(flight));
        const Vector3 way = seen.front();
        if (seen.size() > 15) {
            seen.pop_front();
        }
        const Quaternion& view = flight.self->input.orientation;
        if (way == Vector3()) {
            return {view * smallTurn({0, 1, 0}, turn / 2.0F), control::forward};
        }
        const float around = std::floor(flight.time * 2.0F);  // another error each half second
        const Vector3 axis(std::cos(around), std::sin(around), 0.0F);
        const Quaternion aim = lookAlong(way) * smallTurn(axis, 0.035F);
        const float angle = 2.0F * std::acos(std::min(std::fabs(view.dotProduct(aim)), 1.0F));
        Quaternion turned = Quaternion::Slerp(view, aim, std::min(1.0F, turn / std::max(angle, turn)));
        turned.normalise();
        const bool points = noseOf(flight.self->orientation).dotProduct(noseOf(aim)) > 0.998F;
        return {turned, (way.length() > 60.0F ? control::forward : 0U) | (points ? control::fire : 0U)};
    }

private:
    static constexpr float turn = 1.5708F * Match::stepTime;
    std::deque<Vector3> seen;  ///< ways to enemies; zero if none was in view

    static Vector3 wayToNearest(const Flight& flight)
    {
        Vector3 nearest;
        float least = 250.0F;  // farther ships are specks
        for (const Ship& ship : flight.match.allShips()) {
            if (flight.isInView(ship, least)) {
                nearest = ship.position - flight.self->position;
                least = nearest.length();
            }
        }
        return nearest;
    }
};

}  // namespace

/// The hash changes with every change of the rules, the bots or the math under them, but not with the
/// compiler or the machine.
TEST(Bots, TenMinuteMatchIsTheSameEverywhere)
{
    Match match = botMatch({5});
    std::uint64_t hash = 0xCBF29CE484222325U;  // FNV-1a
    const auto add = [&hash](const std::string& frame) {
        for (const char byte : frame) {
            hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3U;
        }
    };
    constexpr int snapshots = 20;  // a second
    for (int i = 0; i < 600 * snapshots; ++i) {
        run(match, second / snapshots);
        for (const Ship& ship : match.allShips()) {
            add(shipInfoFrame(ship, match));
        }
        for (const Shot& shot : match.allShots()) {
            add(shotInfoFrame(shot, match.timestamp()));
        }
    }
    EXPECT_EQ(hash, 1965001471580897199U);
}

TEST(Bots, FightLivelyAndBalancedMatches)
{
    constexpr int minutes = 3;
    int kills[2] = {0, 0};  // red's, blue's
    int wins[2] = {0, 0};
    int touching = 0;  // a carrier
    int crowded = 0;   // their hulls seem to touch
    for (std::uint32_t seed = 1; seed <= seeds; ++seed) {
        Match match = botMatch({seed, Difficulty::normal, General::FIXED, 0, 0});
        for (int i = 0; i < minutes * 60; ++i) {
            run(match, second);
            for (const Ship& ship : match.allShips()) {
                touching +=
                    ship.alive && !(wayOutOfHulls(ship.position, Rules().shipRadius + 0.5F) == Vector3());
                for (const Ship& other : match.allShips()) {
                    crowded += ship.alive && other.alive && &other != &ship &&
                               other.position.distance(ship.position) < 8.0F;
                }
            }
        }
        for (const Team team : {Team::red, Team::blue}) {
            const auto other = team == Team::red ? Team::blue : Team::red;
            kills[static_cast<int>(team)] += match.teamScore(team);
            wins[static_cast<int>(team)] += match.teamScore(team) > match.teamScore(other);
        }
    }
    constexpr int counted = seeds * minutes * 60 * 16;
    EXPECT_GT(kills[0] + kills[1], static_cast<int>(seeds) * minutes * 20);
    EXPECT_LE(std::max(kills[0], kills[1]) * 10, (kills[0] + kills[1]) * 6);
    EXPECT_LE(std::max(wins[0], wins[1]) * 10, static_cast<int>(seeds) * 6);
    EXPECT_LT(crowded, counted / 1000);
    EXPECT_EQ(touching, 0);
}

TEST(Pilots, SeeTheEnemyBeforeItHurtsThem)
{
    for (const float waits : {4.0F, never}) {
        int saw = 0;
        int spared = 0;
        int hurt = 0;
        for (std::uint32_t seed = 1; seed <= seeds; ++seed) {
            const Flight flight(seed, Difficulty::normal, 45.0F, [waits](const Flight& f) {
                return ShipInput{{}, f.time < waits ? 0 : control::forward | control::fire};
            });
            saw += flight.enemyInView >= 2.0F;
            hurt += !flight.unseen.empty();
            spared += flight.firstDamage > 20.0F && (flight.unseen.empty() || flight.unseen.front() <= 3.0F);
        }
        EXPECT_GE(saw, 36);
        EXPECT_GE(spared, 36);
        EXPECT_GE(hurt, 30) << "the match goes on";
    }
}

TEST(Pilots, WinAndLoseByTheDifficulty)
{
    const struct
    {
        Difficulty difficulty;
        float limit;       ///< seconds until the first kill, kept by 30 pilots
        float leastRatio;  ///< of kills to deaths
        float mostRatio;
        float mostSurprises;  ///< share of the hits by enemies out of view for 3 seconds
    } cases[] = {{Difficulty::easy, 60.0F, 2.0F, never, 0.05F},
                 {Difficulty::normal, 90.0F, 0.5F, 4.0F, 0.05F},
                 {Difficulty::hard, never, 0.0F, 0.99F, 1.0F}};
    for (const auto& c : cases) {
        int inTime = 0;
        float kills = 0.0F;
        float deaths = 0.0F;
        float hits = 0.0F;
        float surprises = 0.0F;
        for (std::uint32_t seed = 1; seed <= seeds; ++seed) {
            const Flight flight(seed, c.difficulty, 90.0F, AverageHuman());
            inTime += flight.firstKill <= c.limit;
            kills += static_cast<float>(flight.self->score);
            deaths += static_cast<float>(flight.self->deaths);
            for (const float unseen : flight.unseen) {
                hits += 1.0F;
                surprises += unseen > 3.0F ? 1.0F : 0.0F;
            }
        }
        EXPECT_GE(inTime, 30);
        EXPECT_GE(kills, c.leastRatio * deaths);
        EXPECT_LE(kills, c.mostRatio * deaths);
        EXPECT_LE(surprises, c.mostSurprises * hits);
    }
}
