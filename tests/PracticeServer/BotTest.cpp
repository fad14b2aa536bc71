#include "PracticeServer/Match.h"
#include "PracticeServer/Steering.h"

#include <gtest/gtest.h>

#include <algorithm>

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

/// Two minutes in which bots fight around a human who follows a fixed script.
std::uint64_t hashAfterTwoMinutes(std::uint32_t seed)
{
    Match match = botMatch(seed);
    const ObjectId human = match.addHuman();
    for (int i = 0; i < 120 * second; ++i) {
        if (i % 30 == 0) {
            const float turn = static_cast<float>(i) * 0.01F;
            const std::uint32_t keys = i % 90 == 0 ? control::fire : control::forward | control::right;
            match.setInput(human, {Quaternion::FromAxisAngle(turn, Vector3(0, 1, 0)), keys});
        }
        match.step();
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

TEST(Bots, AreSplitEvenlyAndAHumanJoinsTheSmallerTeam)
{
    Match match = botMatch(1, 7);
    const auto blue = [&match] {
        return std::count_if(match.allShips().begin(), match.allShips().end(),
                             [](const Ship& s) { return s.team == Team::blue; });
    };
    EXPECT_EQ(blue(), 4);
    match.addHuman();
    EXPECT_EQ(blue(), 4);
}

TEST(Bots, KillEachOtherWithinAMinuteAndStayInTheFight)
{
    for (std::uint32_t seed = 1; seed <= 5; ++seed) {
        SCOPED_TRACE(seed);
        Match match = botMatch(seed);
        float farthest = 0.0F;
        for (int i = 0; i < 60 * second; ++i) {
            match.step();
            for (const Ship& ship : match.allShips()) {
                farthest = std::max(farthest, ship.position.length());
            }
        }
        EXPECT_GE(match.teamScore(Team::red), 1);
        EXPECT_GE(match.teamScore(Team::blue), 1);
        EXPECT_LT(farthest, 240.0F);
    }
}

TEST(Bots, LeaveANewcomerTimeToLookAroundAndThenAttack)
{
    for (std::uint32_t seed = 1; seed <= 5; ++seed) {
        SCOPED_TRACE(seed);
        Match match = botMatch(seed);
        const ObjectId human = match.addHuman();
        int seconds = 0;
        while (seconds < 90 && match.findShip(human)->health == Rules().fullHealth) {
            for (int i = 0; i < second; ++i) {
                match.step();
            }
            ++seconds;
        }
        EXPECT_GT(seconds, 20);
        EXPECT_LT(seconds, 90);
    }
}

TEST(Bots, ThatFlySideBySideMakeRoomForEachOther)
{
    int roomy = 0;
    for (std::uint32_t seed = 1; seed <= 10; ++seed) {
        Match match = botMatch(seed, 3);
        const ObjectId left = match.allShips()[0].id;
        const ObjectId enemy = match.allShips()[1].id;
        const ObjectId right = match.allShips()[2].id;
        match.removeShip(enemy);
        match.editShip(left)->position = Vector3(0, 0, -50);
        match.editShip(right)->position = Vector3(6, 0, -50);
        for (int i = 0; i < 2 * second; ++i) {
            match.step();
        }
        roomy += match.findShip(left)->position.distance(match.findShip(right)->position) > 18.0F ? 1 : 0;
    }
    EXPECT_EQ(roomy, 10);
}

TEST(Bots, WithoutAnEnemyFlyOnAndDoNotFire)
{
    Match match = botMatch(1, 1);
    for (int i = 0; i < 20 * second; ++i) {
        match.step();
        ASSERT_TRUE(match.allShots().empty());
    }
    EXPECT_GT(match.allShips().front().velocity.length(), 10.0F);
}
