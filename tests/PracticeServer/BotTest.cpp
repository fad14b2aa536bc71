#include "PracticeServer/Match.h"

#include <gtest/gtest.h>

using namespace practice;

namespace {

constexpr int second = Match::stepsPerSecond;

Match botMatch(std::uint32_t seed, int bots = 8)
{
    Match match(seed);
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

/// Two minutes in which bots fight around a human who turns, flies and fires.
std::uint64_t hashAfterTwoMinutes(std::uint32_t seed)
{
    Match match = botMatch(seed);
    const ObjectId human = match.addHuman();
    for (int i = 0; i < 240; ++i) {
        const float turn = static_cast<float>(i) * 0.3F;
        const std::uint32_t keys = i % 3 == 0 ? control::fire : control::forward | control::right;
        match.setInput(human, {Quaternion::FromAxisAngle(turn, Vector3(0, 1, 0)), keys});
        run(match, second / 2);
    }
    return match.stateHash();
}

}  // namespace

TEST(Bots, TheSameSeedAndInputsGiveTheSameMatch)
{
    const std::uint64_t hash = hashAfterTwoMinutes(5);
    EXPECT_EQ(hash, hashAfterTwoMinutes(5));
    EXPECT_NE(hash, hashAfterTwoMinutes(6));
}

TEST(Bots, KillEachOtherWithinAMinuteAndStayInTheFight)
{
    for (std::uint32_t seed = 1; seed <= 5; ++seed) {
        Match match = botMatch(seed);
        for (int i = 0; i < 60 * second; ++i) {
            match.step();
            for (const Ship& ship : match.allShips()) {
                ASSERT_LT(ship.position.length(), 240.0F);
            }
        }
        EXPECT_GE(match.teamScore(Team::red), 1);
        EXPECT_GE(match.teamScore(Team::blue), 1);
    }
}

TEST(Bots, LeaveANewcomerTimeToLookAroundAndThenAttack)
{
    for (std::uint32_t seed = 1; seed <= 5; ++seed) {
        Match match = botMatch(seed);
        const ObjectId human = match.addHuman();
        int seconds = 0;
        for (; seconds < 90 && match.findShip(human)->health == Rules().fullHealth; ++seconds) {
            run(match, second);
        }
        EXPECT_GT(seconds, 20);
        EXPECT_LT(seconds, 90);
    }
}

TEST(Bots, ThatFlySideBySideWithoutAnEnemyMakeRoomFlyOnAndDoNotFire)
{
    for (std::uint32_t seed = 1; seed <= 10; ++seed) {
        Match match = botMatch(seed, 3);
        match.removeShip(match.allShips()[1].id);
        const Ship& left = *match.editShip(match.allShips()[0].id);
        Ship& right = *match.editShip(match.allShips()[1].id);
        right.position = left.position + Vector3(6, 0, 0);
        run(match, 2 * second);
        EXPECT_GT(left.position.distance(right.position), 18.0F);
        run(match, 10 * second);
        EXPECT_TRUE(match.allShots().empty());
        EXPECT_GT(left.velocity.length(), 10.0F);
    }
}
