#include "server/balance/ScriptedPilots.h"
#include "server/match/Hull.h"
#include "server/net/MatchBroadcast.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace practice;

namespace {

constexpr int second = Match::stepsPerSecond;
constexpr std::uint32_t seeds = 40;
constexpr float never = FlightRecord::never;

void run(Match& match, unsigned steps)
{
    for (unsigned i = 0; i < steps; ++i) {
        match.step();
    }
}

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
            const FlightRecord flight = fly(seed, Difficulty::normal, 45.0F, newcomer(waits));
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
            const FlightRecord flight = fly(seed, c.difficulty, 90.0F, averageHuman());
            inTime += flight.firstKill <= c.limit;
            kills += static_cast<float>(flight.kills);
            deaths += static_cast<float>(flight.deaths);
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
