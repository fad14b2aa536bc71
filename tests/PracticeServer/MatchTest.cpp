#include "PracticeServer/Match.h"
#include "tests/PracticeServer/Recorder.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace practice;

namespace {

/// Ships of alternating teams, blue first, that are placed by hand and look along +z.
class MatchTest : public testing::Test
{
protected:
    Recorder recorder;
    Match match{1, &recorder};

    ObjectId place(const Vector3& position)
    {
        const ObjectId id = match.addHuman();
        match.editShip(id)->position = position;
        return id;
    }
    void hold(ObjectId id, std::uint32_t controls) { match.setInput(id, {Quaternion(), controls}); }
    void run(float seconds)
    {
        for (int i = 0; i < static_cast<int>(std::lround(seconds * 60.0F)); ++i) {
            match.step();
        }
    }
    void fireOnce(ObjectId id)
    {
        hold(id, control::fire);
        match.step();
        hold(id, 0);
    }
    float health(ObjectId id) const { return match.findShip(id)->health; }
};

}  // namespace

TEST_F(MatchTest, EveryShipGetsItsOwnIdAboveTheClientsOwn)
{
    const ObjectId first = match.addBot();
    const ObjectId second = match.addHuman();
    EXPECT_GE(first, ObjectId(1) << 32U);
    EXPECT_GT(second, first);
}

TEST_F(MatchTest, AHitTakesHealthFromTheEnemyAndEndsTheShot)
{
    const ObjectId shooter = place({0, 0, 0});
    const ObjectId enemy = place({0, 0, 80});
    fireOnce(shooter);
    run(1.0F);
    EXPECT_EQ(health(enemy), Rules().fullHealth - Rules().shotDamage);
    EXPECT_EQ(health(shooter), Rules().fullHealth);
    EXPECT_EQ(recorder.count("ended"), 1);
    EXPECT_TRUE(match.allShots().empty());
}

TEST_F(MatchTest, AShotThatIsFarFasterThanAShipIsLongStillHits)
{
    Rules rules;
    rules.shotSpeed = 20000.0F;
    rules.shotRange = 2000.0F;
    match = Match(1, &recorder, rules);
    const ObjectId shooter = place({0, 0, 0});
    const ObjectId enemy = place({4, 0, 200});
    fireOnce(shooter);
    run(0.1F);
    EXPECT_LT(health(enemy), rules.fullHealth);
}

TEST_F(MatchTest, AShotPassesAFriendAndHitsTheFirstEnemyBehind)
{
    const ObjectId shooter = place({0, 0, 0});
    const ObjectId farEnemy = place({0, 0, 120});
    const ObjectId friendly = place({0, 0, 40});
    const ObjectId nearEnemy = place({0, 0, 80});
    ASSERT_EQ(match.findShip(friendly)->team, match.findShip(shooter)->team);
    fireOnce(shooter);
    run(1.0F);
    EXPECT_EQ(health(friendly), Rules().fullHealth);
    EXPECT_LT(health(nearEnemy), Rules().fullHealth);
    EXPECT_EQ(health(farEnemy), Rules().fullHealth);
}

TEST_F(MatchTest, AShipThatOvertakesItsOwnShotIsNotHurt)
{
    Rules rules;
    rules.shotSpeed = 1.0F;
    rules.shotRange = 30.0F;
    match = Match(1, &recorder, rules);
    const ObjectId shooter = place({0, 0, -300});
    fireOnce(shooter);
    hold(shooter, control::forward);
    run(5.0F);
    EXPECT_GT(match.findShip(shooter)->position.z, match.allShots().front().position.z);
    EXPECT_EQ(health(shooter), rules.fullHealth);
}

TEST_F(MatchTest, ShotsComeAtTheReloadRateAndEndAtTheirRange)
{
    const ObjectId shooter = place({0, 0, -300});
    hold(shooter, control::fire);
    run(1.99F);
    EXPECT_EQ(recorder.count("fired"), 8);
    hold(shooter, 0);
    const float farthest = Rules().shotRange + Rules().muzzleDistance + 4.0F;  // one step of flight more
    for (int i = 0; i < 300 && !match.allShots().empty(); ++i) {
        EXPECT_LT(match.allShots().front().position.z, -300.0F + farthest);
        match.step();
    }
    EXPECT_EQ(recorder.count("ended"), 8);
}

TEST_F(MatchTest, AKillScoresForShooterAndTeamAndTheVictimReturnsWhole)
{
    const ObjectId shooter = place({0, 0, 0});
    const ObjectId victim = place({0, 0, 50});
    match.editShip(victim)->health = 5.0F;
    recorder.events.clear();
    fireOnce(shooter);
    run(1.0F);
    const std::vector<std::string> expected = {"fired", "ended", "exploded", "vanished", "data"};
    EXPECT_EQ(recorder.events, expected);
    EXPECT_EQ(match.findShip(shooter)->score, 1);
    EXPECT_EQ(match.teamScore(Team::blue), 1);
    EXPECT_EQ(match.teamScore(Team::red), 0);
    EXPECT_FALSE(match.findShip(victim)->alive);

    hold(victim, control::fire | control::forward);  // the dead neither fly nor shoot
    run(Rules().respawnTime - 1.1F);
    EXPECT_FALSE(match.findShip(victim)->alive);
    EXPECT_EQ(recorder.count("fired"), 1);
    hold(victim, 0);
    run(1.0F);
    EXPECT_TRUE(match.findShip(victim)->alive);
    EXPECT_EQ(health(victim), Rules().fullHealth);
    EXPECT_EQ(recorder.count("appeared"), 1);
}

TEST_F(MatchTest, AKillByAShooterWhoLeftStillScoresForTheTeamAndIsAnnounced)
{
    const ObjectId shooter = place({0, 0, 0});
    const ObjectId victim = place({0, 0, 50});
    place({300, 0, 0});
    match.editShip(victim)->health = 5.0F;
    fireOnce(shooter);
    match.removeShip(shooter);
    recorder.events.clear();
    run(1.0F);
    EXPECT_EQ(match.teamScore(Team::blue), 1);
    EXPECT_EQ(recorder.count("data"), 1);
}

TEST_F(MatchTest, ALeavingShipVanishesOnceAndADeadOneSilently)
{
    const ObjectId living = place({0, 0, 0});
    const ObjectId dead = place({0, 0, 50});
    match.editShip(dead)->alive = false;
    match.removeShip(living);
    match.removeShip(dead);
    match.removeShip(dead);
    EXPECT_EQ(recorder.count("vanished"), 1);
    EXPECT_TRUE(match.allShips().empty());
}

TEST_F(MatchTest, HumansStartWithTheFightInView)
{
    for (int i = 0; i < 12; ++i) {
        const Ship& ship = *match.findShip(match.addHuman());
        EXPECT_LT(ship.position.z, -100.0F);
        EXPECT_LT(std::fabs(ship.position.x) / -ship.position.z,
                  std::tan(0.6F));  // 34 of the view's 37 degrees
        EXPECT_EQ(ship.position.x < 0.0F, ship.team == Team::blue);
        EXPECT_EQ(ship.orientation, Quaternion());
    }
}

TEST_F(MatchTest, TimestampsCountMatchTimeInMilliseconds)
{
    run(1.0F);
    EXPECT_EQ(match.timestamp(), 1000U);
}
