#include "PracticeServer/BattleFront.h"
#include "PracticeServer/Match.h"
#include "PracticeServer/Steering.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

using namespace practice;

namespace {

constexpr int second = Match::stepsPerSecond;

Match botMatch(std::uint32_t seed, int bots = 16, Difficulty difficulty = Difficulty::normal)
{
    MatchSettings settings;
    settings.seed = seed;
    settings.difficulty = difficulty;
    settings.scoreLimit = 0;
    settings.timeLimit = 0;
    Match match(settings);
    for (int i = 0; i < bots; ++i) {
        match.addBot();
    }
    return match;
}

void run(Match& match, int steps)
{
    for (int i = 0; i < steps; ++i) {
        match.step();
    }
}

/// A bot match with the standard limits.
std::uint64_t hashAfterTenMinutes(std::uint32_t seed)
{
    MatchSettings settings;
    settings.seed = seed;
    Match match(settings);
    for (int i = 0; i < 16; ++i) {
        match.addBot();
    }
    run(match, 600 * second);
    return match.stateHash();
}

float distanceToFight(const Ship& ship, const Match& match)
{
    const float time = static_cast<float>(match.stepCount()) * Match::stepTime;
    return std::min(ship.position.distance(battleFront(Team::blue, time)),
                    ship.position.distance(battleFront(Team::red, time)));
}

}  // namespace

/// Changes with every change of the rules, the bots or the math under them, but not with the build.
TEST(Bots, ATenMinuteMatchEndsInTheSameStateEverywhere)
{
    EXPECT_EQ(hashAfterTenMinutes(5), 18337779254870769357U);
}

TEST(Bots, TheInputOfAHumanAndTheSeedMakeTheMatch)
{
    const auto hash = [](std::uint32_t seed, std::uint32_t controls) {
        Match match = botMatch(seed, 4);
        match.setInput(match.addHuman(), {Quaternion(), controls});
        run(match, 20 * second);
        return match.stateHash();
    };
    const std::uint64_t one = hash(5, control::forward);
    EXPECT_EQ(one, hash(5, control::forward));
    EXPECT_NE(one, hash(6, control::forward));
    EXPECT_NE(one, hash(5, control::backward));
}

TEST(Bots, FightALivelyAndBalancedMatchAroundTheCarriers)
{
    int kills = 0;
    int redWins = 0;
    int blueWins = 0;
    long far = 0;
    constexpr int seeds = 20;
    constexpr int minutes = 5;
    for (std::uint32_t seed = 1; seed <= seeds; ++seed) {
        Match match = botMatch(seed);
        for (int i = 0; i < minutes * 60; ++i) {
            run(match, second);
            far += std::count_if(match.allShips().begin(), match.allShips().end(),
                                 [&](const Ship& ship) { return distanceToFight(ship, match) > 400.0F; });
        }
        const int lead = match.teamScore(Team::blue) - match.teamScore(Team::red);
        kills += match.teamScore(Team::blue) + match.teamScore(Team::red);
        redWins += lead < 0 ? 1 : 0;
        blueWins += lead > 0 ? 1 : 0;
    }
    EXPECT_GT(kills, seeds * minutes * 20);
    EXPECT_LE(redWins, seeds * 7 / 10);
    EXPECT_LE(blueWins, seeds * 7 / 10);
    EXPECT_LT(far, seeds * minutes * 60 * 16 / 10);  // raiders on their way; a tenth of all
}

TEST(Bots, LeadTheirAimFireWhenOnItAndTurnAwayWhenHit)
{
    const Vector3 front = battleFront(Team::blue, 0.0F);
    Ship bot;
    bot.id = 1;
    bot.team = Team::blue;
    bot.alive = true;
    bot.position = front;
    bot.health = 100.0F;
    Sighting enemy;
    enemy.id = 2;
    enemy.position = front + Vector3(0, 0, 100);
    enemy.velocity = {40, 0, 0};
    enemy.peaceful = false;
    const std::vector<Sighting> sightings{sightingOf(bot), enemy};
    const Rules rules;
    const BotView view{sightings, rules, 0.0F, Match::stepTime};
    const Vector3 aim = leadDirection({0, 0, 100}, enemy.velocity, Rules().shotSpeed);

    Random random(1);
    BotPilot pilot(bot.id, BotPilot::Role::guard, BotSkill{0.0F, 1.0F, 150.0F, 1.0F, 0.0F});
    const ShipInput towards = pilot.steer(bot, view, random);
    EXPECT_GT(noseOf(towards.orientation).dotProduct(aim), 0.9999F);
    EXPECT_EQ(towards.controls & control::fire, 0U);  // the nose is not there yet
    bot.orientation = towards.orientation;
    EXPECT_NE(pilot.steer(bot, view, random).controls & control::fire, 0U);
    bot.health -= 10.0F;
    const ShipInput away = pilot.steer(bot, view, random);
    EXPECT_LT(noseOf(away.orientation).dotProduct(aim), 0.9999F);
    EXPECT_EQ(away.controls & control::fire, 0U);
}

/// How many a middling pilot kills for each time he dies: he flies at the nearest enemy and fires at it all
/// the time, a few degrees off.
float killsPerDeath(Difficulty difficulty)
{
    float kills = 0.0F;
    float deaths = 1.0F;
    for (std::uint32_t seed = 1; seed <= 8; ++seed) {
        Match match = botMatch(seed, 16, difficulty);
        run(match, 30 * second);
        const ObjectId id = match.addHuman();
        for (int i = 0; i < 120 * second; ++i) {
            const Ship& pilot = *match.findShip(id);
            const auto enemy = std::min_element(match.allShips().begin(), match.allShips().end(),
                                                [&](const Ship& a, const Ship& b) {
                                                    const auto order = [&](const Ship& s) {
                                                        return std::pair(!s.alive || s.team == pilot.team,
                                                                         s.position.distance(pilot.position));
                                                    };
                                                    return order(a) < order(b);
                                                });
            const Vector3 aim = leadDirection(enemy->position - pilot.position,
                                              enemy->velocity - pilot.velocity, Rules().shotSpeed);
            const float sway = 0.1F * std::sin(static_cast<float>(i) * 0.04F);
            match.setInput(id, {lookAlong(aim) * Quaternion::FromAxisAngle(sway, Vector3(0.7F, 0.7F, 0)),
                                control::forward | control::fire});
            match.step();
        }
        kills += static_cast<float>(match.findShip(id)->score);
        deaths += static_cast<float>(match.findShip(id)->deaths);
    }
    return kills / deaths;
}

TEST(Bots, AreHarderForAHumanTheMoreSkilledTheyAre)
{
    const float easy = killsPerDeath(Difficulty::easy);
    const float normal = killsPerDeath(Difficulty::normal);
    EXPECT_GT(easy, 1.5F * normal);
    EXPECT_GT(normal, 1.5F * killsPerDeath(Difficulty::hard));
}

TEST(Bots, LeaveANewcomerTimeToLookAroundUnlessHeFires)
{
    int secondsUntilHit[2] = {0, 0};  // of the idle, of those who fire; summed
    for (std::uint32_t seed = 1; seed <= 10; ++seed) {
        for (const std::uint32_t controls : {0U, control::fire}) {
            Match match = botMatch(seed);
            const ObjectId human = match.addHuman();
            match.editShip(human)->position = battleFront(Team::blue, 0.0F);
            match.setInput(human, {Quaternion(), controls});
            int seconds = 0;
            for (; match.findShip(human)->health == Rules().fullHealth; ++seconds) {
                ASSERT_LT(seconds, 120);
                run(match, second);
            }
            secondsUntilHit[controls == 0 ? 0 : 1] += seconds;
        }
    }
    EXPECT_GT(secondsUntilHit[0], 10 * 22);
    EXPECT_LT(secondsUntilHit[1], secondsUntilHit[0] - 10 * 5);
}

TEST(Bots, MakeRoomForEachOther)
{
    // Two guards at one place, everyone else gone: nothing but the wish for room parts them.
    for (std::uint32_t seed = 1; seed <= 5; ++seed) {
        Match match = botMatch(seed, 16);
        const std::vector<Ship> all = match.allShips();
        for (const Ship& ship : all) {
            if (ship.id != all[0].id && ship.id != all[6].id) {  // blue's first two guards
                match.removeShip(ship.id);
            }
        }
        Ship& left = *match.editShip(all[0].id);
        Ship& right = *match.editShip(all[6].id);
        float least = 1000.0F;
        for (int i = 0; i < 60 * second; ++i) {
            match.step();
            least = i > 20 * second ? std::min(least, left.position.distance(right.position)) : least;
        }
        EXPECT_GT(least, 8.0F);
        EXPECT_TRUE(match.allShots().empty());
        EXPECT_GT(left.velocity.length(), 10.0F);
    }
}
