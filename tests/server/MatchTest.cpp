#include "server/match/Match.h"

#include "server/match/MatchResult.h"
#include "server/net/MatchBroadcast.h"
#include "tests/server/Heard.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <set>

using namespace practice;

namespace {

const MatchSettings twoKills{1, Difficulty::normal, General::FIXED, 2, 0};

/// A match of two kills and what its broadcast sends without loss. Ships are placed by hand, look along +z
/// and belong to alternating teams, blue first.
class MatchTest : public testing::Test
{
protected:
    Heard heard;
    Match match{twoKills};
    MatchBroadcast broadcast{match, [this](std::string frame) { heard.take(frame); }};

    MatchTest() { match.addObserver(&broadcast); }

    ObjectId place(const Vector3& position, float health = Rules().fullHealth)
    {
        const ObjectId id = match.addHuman();
        match.editShip(id)->position = position;
        match.editShip(id)->health = health;
        return id;
    }
    ObjectId placeDead(const Vector3& position)
    {
        const ObjectId id = place(position);
        match.editShip(id)->alive = false;
        match.editShip(id)->respawnIn = 100.0F;
        return id;
    }
    void step(int times)
    {
        for (int i = 0; i < times; ++i) {
            match.step();
            broadcast.afterStep();
        }
    }
    void hold(ObjectId id, std::uint32_t controls) { match.setInput(id, {Quaternion(), controls}); }
    void fireOnce(ObjectId id)
    {
        hold(id, control::fire);
        step(1);
        hold(id, 0);
    }
    float health(ObjectId id) const { return match.findShip(id)->health; }
    static Heard heardIn(const std::vector<std::string>& runs)
    {
        Heard result;
        for (std::string run : runs) {
            result.take(run);
        }
        return result;
    }
    Heard snapshot() { return heardIn(broadcast.takeSnapshot()); }
};

/// Sixteen bots in the scene.
struct BotMatch
{
    Match match;

    explicit BotMatch(const MatchSettings& settings) : match(settings)
    {
        for (int i = 0; i < 16; ++i) {
            match.addBot();
        }
    }
};

}  // namespace

TEST_F(MatchTest, AShotIsAnnouncedPassesAFriendAndEndsAtTheFirstEnemy)
{
    const ObjectId shooter = place({0, 0, 0});
    const ObjectId nearEnemy = place({0, 0, 80});
    const ObjectId friendly = place({0, 0, 40});
    const ObjectId farEnemy = place({0, 0, 81});  // met within the same step
    heard = {};
    fireOnce(shooter);
    ASSERT_EQ(heard.infos.size(), 1U);
    const Vantor::ObjectInfo& shot = heard.infos[0];
    EXPECT_EQ(shot.objecttype(), 1U);
    EXPECT_EQ(heard.positions[shot.id()], Vector3(0, 0, Rules().muzzleDistance));
    EXPECT_EQ(shot.orientation().w(), 1.0F);
    EXPECT_EQ(shot.projectiledata().velocity().z(), Rules().shotSpeed);
    EXPECT_TRUE(shot.projectiledata().blueteam());
    EXPECT_EQ(shot.timestamp(), match.timestamp());

    step(60);
    EXPECT_EQ(health(shooter) + health(friendly) + health(farEnemy), 3 * Rules().fullHealth);
    EXPECT_EQ(health(nearEnemy), Rules().fullHealth - Rules().shotDamage);
    EXPECT_TRUE(match.allShots().empty());
    EXPECT_EQ(heard.destroyed, std::vector<ObjectId>{shot.id()});
}

TEST(FriendlyFire, HitsTheOwnTeamWhereItIsOnAndAKillCostsAPoint)
{
    MatchSettings settings;
    settings.friendlyFire = true;
    Match match(settings);
    const ObjectId ids[] = {match.addHuman(), match.addHuman(), match.addHuman()};  // blue, red, blue
    for (std::size_t i = 0; i < std::size(ids); ++i) {
        match.editShip(ids[i])->position = Vector3(0, 0, i == 1 ? -50.0F : 30.0F * static_cast<float>(i));
    }
    match.editShip(ids[2])->health = 5.0F;
    match.setInput(ids[0], {Quaternion(), control::fire});
    for (int i = 0; i < 30; ++i) {
        match.step();
    }
    EXPECT_EQ(match.teamScore(Team::blue), -1);
    EXPECT_EQ(match.findShip(ids[0])->score, -1);
    EXPECT_EQ(match.findShip(ids[0])->health, Rules().fullHealth);
}

TEST_F(MatchTest, AKillLeavesExplosionsAndTheVictimReturnsWholeUnderItsId)
{
    const ObjectId shooter = place({0, 0, 0});
    const ObjectId victim = place({0, 0, 50}, 5.0F);
    fireOnce(shooter);
    step(60);
    EXPECT_EQ(heard.destroyed.size(), 1U + 1U + 3U);  // shot, ship, debris
    for (const ObjectId id : heard.destroyed) {
        EXPECT_EQ(heard.positions.count(id), 1U);
    }
    // The shooter's new score went as full state, and still the clients must hear something.
    EXPECT_EQ(broadcast.takeSnapshot(), std::vector<std::string>{""});

    heard = {};
    hold(victim, control::fire | control::forward);  // the dead neither fly nor shoot
    step(60 * 3 - 10);
    EXPECT_FALSE(match.findShip(victim)->alive);
    EXPECT_TRUE(heard.infos.empty());
    hold(victim, 0);
    match.editShip(victim)->velocity = {30, 0, 0};
    step(60);
    EXPECT_EQ(match.findShip(victim)->velocity, Vector3());
    ASSERT_EQ(heard.infos.size(), 1U);
    EXPECT_EQ(heard.infos[0].id(), victim);
    EXPECT_EQ(heard.infos[0].playerdata().health(), Rules().fullHealth);
    EXPECT_EQ(heard.infos[0].playerdata().blueteamscore(), 1);
}

TEST_F(MatchTest, ChangedDataLeavesWithTheSnapshotInPlaceOfTheUpdate)
{
    const ObjectId shooter = place({0, 0, 0});
    const ObjectId enemy = place({0, 0, 20});
    fireOnce(shooter);
    heard = {};
    step(20);
    EXPECT_TRUE(heard.infos.empty());
    const Heard first = snapshot();
    ASSERT_EQ(first.updates.size(), 1U);
    EXPECT_EQ(first.updates[0].id(), shooter);
    ASSERT_EQ(heard.infos.size(), 1U);
    EXPECT_EQ(heard.infos[0].id(), enemy);
    EXPECT_EQ(heard.infos[0].playerdata().health(), Rules().fullHealth - Rules().shotDamage);
    EXPECT_EQ(snapshot().updates.size(), 1U);  // still the same match time
    step(3);
    const Heard next = snapshot();
    EXPECT_EQ(next.updates.size(), 2U);
    EXPECT_EQ(next.updates[0].timestamp() - first.updates[0].timestamp(), 50U);
}

TEST_F(MatchTest, AShooterWhoLeavesVanishesOnceAndHisShotStillScoresForTheTeam)
{
    const ObjectId shooter = place({0, 0, 0});
    place({0, 0, 50}, 5.0F);
    const ObjectId dead = placeDead({300, 0, 0});
    fireOnce(shooter);
    for (const ObjectId id : {shooter, dead, dead}) {
        match.removeShip(id);
    }
    place({-300, 0, 0});
    EXPECT_EQ(heard.destroyed, std::vector<ObjectId>{shooter});
    step(60);
    snapshot();
    EXPECT_EQ(match.teamScore(Team::blue), 1);
    EXPECT_EQ(heard.infos.back().playerdata().blueteamscore(), 1);
}

TEST_F(MatchTest, APointBlankShotIsShownForAWhileAndTheDeadAreNotIntroduced)
{
    const ObjectId shooter = place({0, 0, 0});
    place({0, 0, 10});
    placeDead({0, 0, -80});
    fireOnce(shooter);
    EXPECT_EQ(heardIn(broadcast.introduction()).infos.size(), 3U);  // two ships and the shot
    step(5);
    ASSERT_TRUE(match.allShots().empty());  // it has hit
    EXPECT_TRUE(heard.destroyed.empty());
    step(10);
    EXPECT_EQ(heard.destroyed.size(), 1U);
}

TEST_F(MatchTest, EndsAtTheScoreLimitAndTheNextOneStartsWithNoScores)
{
    const ObjectId shooter = place({0, 0, 0});
    place({0, 0, 50}, 5.0F);
    const ObjectId friendly = place({50, 50, 0});
    place({0, 0, 70}, 5.0F);
    match.removeShip(friendly);
    hold(shooter, control::fire);
    step(60);
    const auto result = match.takeResult();
    ASSERT_TRUE(result);
    EXPECT_EQ(scoreTable(*result),
              (std::vector<std::string>{"match 1 over after 0:00: blue wins, blue 2 red 0",
                                        "  blue Pilot 1            2 kills    0 deaths",
                                        "  red  Pilot 2            0 kills    1 deaths",
                                        "  red  Pilot 4            0 kills    1 deaths"}));
    EXPECT_FALSE(match.takeResult());
    EXPECT_TRUE(heardIn(broadcast.introduction()).infos.empty());  // neither ships nor shots
    EXPECT_EQ(match.teamScore(Team::blue), 2);

    hold(shooter, 0);
    heard = {};
    const ObjectId latecomer = match.addHuman();
    EXPECT_FALSE(match.findShip(latecomer)->alive);
    step(static_cast<int>(Rules().intermission * 60.0F) + 1);
    EXPECT_EQ(match.teamScore(Team::blue), 0);
    ASSERT_EQ(heard.infos.size(), 4U);
    for (const auto& info : heard.infos) {
        EXPECT_EQ(info.playerdata().health(), Rules().fullHealth);
        EXPECT_EQ(info.playerdata().score() + info.playerdata().blueteamscore(), 0);
    }
}

TEST(StartPoints, AreEachModesOwnTheSameForTheSameSeedAndNeverOverlap)
{
    const auto shipsIn = [](General::Mode mode) {
        std::rand();  // others draw from the C library's generator too
        return BotMatch({1, Difficulty::normal, mode, 0, 0}).match.allShips();
    };
    for (const General::Mode mode : {General::FIXED, General::RANDOM, General::GRID}) {
        const std::vector<Ship> ships = shipsIn(mode);
        const std::vector<Ship> again = shipsIn(mode);
        std::set<float> columns;  // of blue's ships; the grid grows with the scene
        for (std::size_t i = 0; i < ships.size(); ++i) {
            const Vector3& place = ships[i].position;
            EXPECT_EQ(place, again[i].position) << mode;
            for (std::size_t j = 0; j < i; ++j) {
                EXPECT_GT(place.distance(ships[j].position), 13.0F) << mode;
            }
            const float side = ships[i].team == Team::blue ? -500.0F : 500.0F;
            EXPECT_EQ(place.distance({side, 0, 0}) < 175.0F, mode != General::GRID) << mode;
            if (side < 0.0F) {
                columns.insert(place.x);
            }
        }
        EXPECT_EQ(columns.size() > 3, mode != General::FIXED);
    }
}

