#include "server/match/Bot.h"
#include "server/match/Match.h"

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

bool isAtTheFight(const Ship& ship, const Match& match)
{
    const float time = static_cast<float>(match.stepCount()) * Match::stepTime;
    return std::min(ship.position.distance(fightCentre(Team::blue, time)),
                    ship.position.distance(fightCentre(Team::red, time))) <= 400.0F;
}

/// Whether another living ship is so near that the hulls seem to touch.
bool isCrowded(const Ship& ship, const Match& match)
{
    return ship.alive &&
           std::any_of(match.allShips().begin(), match.allShips().end(), [&](const Ship& other) {
               return other.alive && other.id != ship.id && other.position.distance(ship.position) < 8.0F;
           });
}

/// What ten pilots lose who circle where the fight is, and are mended again and again.
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

/// Changes with every change of the rules, the bots or the math under them, but not with the build.
TEST(Bots, ATenMinuteMatchEndsInTheSameStateEverywhere)
{
    Match match = botMatch({5});
    run(match, 600 * second);
    EXPECT_EQ(match.stateHash(), 18337779254870769357U);
}

TEST(Bots, FightALivelyAndBalancedMatchAroundTheCarriers)
{
    int kills = 0;
    int redWins = 0;
    int blueWins = 0;
    long atTheFight = 0;  // ships, counted each second
    long crowded = 0;
    constexpr int seeds = 20;
    constexpr int minutes = 5;
    for (std::uint32_t seed = 1; seed <= seeds; ++seed) {
        Match match = botMatch({seed, Difficulty::normal, General::FIXED, 0, 0});
        const auto count = [&](auto condition) {
            return std::count_if(match.allShips().begin(), match.allShips().end(),
                                 [&](const Ship& ship) { return condition(ship, match); });
        };
        for (int i = 0; i < minutes * 60; ++i) {
            run(match, second);
            atTheFight += count(isAtTheFight);
            crowded += count(isCrowded);
        }
        const int lead = match.teamScore(Team::blue) - match.teamScore(Team::red);
        kills += match.teamScore(Team::blue) + match.teamScore(Team::red);
        redWins += lead < 0 ? 1 : 0;
        blueWins += lead > 0 ? 1 : 0;
    }
    EXPECT_GT(kills, seeds * minutes * 20);
    EXPECT_LE(redWins, seeds * 7 / 10);
    EXPECT_LE(blueWins, seeds * 7 / 10);
    constexpr long counted = seeds * minutes * 60 * 16;
    EXPECT_GT(atTheFight, counted * 9 / 10);  // the others are raiders on their way
    EXPECT_LT(crowded, counted / 1000);
}

TEST(Bots, AreHarderForAHumanTheMoreSkilledTheyAre)
{
    const std::uint32_t attack = control::forward | control::fire;
    const float normal = damageTo(attack, 60);
    EXPECT_GT(normal, 1.5F * damageTo(attack, 60, Difficulty::easy));
    EXPECT_LT(1.5F * normal, damageTo(attack, 60, Difficulty::hard));
}

TEST(Bots, LeaveANewcomerTimeToLookAroundUnlessHeFires)
{
    EXPECT_EQ(damageTo(control::forward, 22), 0.0F);
    EXPECT_GT(damageTo(control::forward | control::fire, 22), 0.0F);
    EXPECT_GT(damageTo(control::forward, 60), 0.0F);
}
