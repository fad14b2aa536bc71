#include "server/match/Match.h"
#include "server/net/MatchBroadcast.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace practice;

namespace {

constexpr int second = Match::stepsPerSecond;

void run(Match& match, int steps)
{
    for (int i = 0; i < steps; ++i) {
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

/// The damage to ten pilots who circle in a fight and are mended again and again.
float damageTo(std::uint32_t controls, int seconds, Difficulty difficulty = Difficulty::normal)
{
    float sum = 0.0F;
    for (std::uint32_t seed = 1; seed <= 10; ++seed) {
        Match match = botMatch({seed, difficulty, General::FIXED, 0, 0});
        Ship& human = *match.editShip(match.addHuman());
        human.position = fightCentre(Team::blue, 0.0F);
        for (int i = 0; i < seconds * 6; ++i) {
            const float turn = 0.1F * static_cast<float>(i);
            human.input = {Quaternion::FromAxisAngle(turn, Vector3(0, 1, 0)), controls};
            run(match, second / 6);
            sum += Rules().fullHealth - human.health;
            human.health = Rules().fullHealth;
        }
    }
    return sum;
}

}  // namespace

/// The hash changes with every change of the rules, the bots or the math under them, but not with the compiler or the machine.
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
    EXPECT_EQ(hash, 11683373544678127008U);
}

TEST(Bots, FightLivelyAndBalancedMatches)
{
    constexpr int seeds = 10;
    constexpr int minutes = 5;
    int kills = 0;
    int wins[2] = {0, 0};  // red's, blue's
    int fighting = 0;      // ships, counted each second
    int crowded = 0;       // their hulls seem to touch
    for (std::uint32_t seed = 1; seed <= seeds; ++seed) {
        Match match = botMatch({seed, Difficulty::normal, General::FIXED, 0, 0});
        for (int i = 1; i <= minutes * 60; ++i) {
            run(match, second);
            const auto time = static_cast<float>(i);
            for (const Ship& ship : match.allShips()) {
                fighting += ship.position.distance(fightCentre(Team::blue, time)) <= 400.0F ||
                            ship.position.distance(fightCentre(Team::red, time)) <= 400.0F;
                for (const Ship& other : match.allShips()) {
                    crowded += ship.alive && other.alive && &other != &ship &&
                               other.position.distance(ship.position) < 8.0F;
                }
            }
        }
        const int red = match.teamScore(Team::red);
        const int blue = match.teamScore(Team::blue);
        kills += red + blue;
        wins[0] += red > blue;
        wins[1] += blue > red;
    }
    EXPECT_GT(kills, seeds * minutes * 20);
    EXPECT_LE(std::max(wins[0], wins[1]), seeds * 7 / 10);
    constexpr int counted = seeds * minutes * 60 * 16;
    EXPECT_GT(fighting, counted * 9 / 10) << "the others are on their way";
    EXPECT_LT(crowded, counted / 1000);
}

TEST(Bots, HitHumansMoreTheMoreSkilledTheyAre)
{
    const std::uint32_t attack = control::forward | control::fire;
    const float normal = damageTo(attack, 60);
    EXPECT_GT(normal, 1.5F * damageTo(attack, 60, Difficulty::easy));
    EXPECT_LT(1.5F * normal, damageTo(attack, 60, Difficulty::hard));
}

TEST(Bots, SpareANewHumanUntilItFires)
{
    EXPECT_EQ(damageTo(control::forward, 22), 0.0F);
    EXPECT_GT(damageTo(control::forward | control::fire, 22), 0.0F);
    EXPECT_GT(damageTo(control::forward, 60), 0.0F);
}
