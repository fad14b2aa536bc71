#include "PracticeServer/Match.h"

#include "PracticeServer/MatchBroadcast.h"
#include "PracticeServer/SceneMirror.h"
#include "PracticeServer/ScoreTable.h"
#include "scene/SceneGraph.h"
#include "tests/PracticeServer/TestClient.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <set>

using namespace practice;

namespace {

constexpr unsigned int shotType = 1;

template <class Value>
Rules with(Value Rules::*rule, Value value)
{
    Rules rules;
    rules.*rule = value;
    return rules;
}

/// A match and what its broadcast sends without loss. Ships are placed by hand, look along +z and belong to
/// alternating teams, blue first.
class MatchTest : public testing::Test
{
protected:
    Heard heard;
    Match match;
    MatchBroadcast broadcast{match, [this](std::string frame) { heard.take(frame); }};

    explicit MatchTest(const MatchSettings& settings = {}, const Rules& rules = {}) : match(settings, rules)
    {
        match.addObserver(&broadcast);
    }

    ObjectId place(const Vector3& position)
    {
        const ObjectId id = match.addHuman();
        match.editShip(id)->position = position;
        return id;
    }
    ObjectId placeDead(const Vector3& position)
    {
        const ObjectId id = place(position);
        match.editShip(id)->alive = false;
        match.editShip(id)->respawnIn = 100.0F;
        return id;
    }
    void step(int times = 1)
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
        step();
        hold(id, 0);
    }
    float health(ObjectId id) const { return match.findShip(id)->health; }
    static Heard heardIn(std::vector<std::string> runs)
    {
        Heard result;
        for (std::string& run : runs) {
            result.take(run);
        }
        return result;
    }
    Heard snapshot() { return heardIn(broadcast.takeSnapshot()); }
};

struct FriendlyFireTest : MatchTest
{
    FriendlyFireTest() : MatchTest({}, with(&Rules::friendlyFire, true)) {}
};

struct NoLimitsTest : MatchTest
{
    NoLimitsTest() : MatchTest({}, with(&Rules::maxSpeed, 1e6F)) {}
};

class ShortMatchTest : public MatchTest
{
protected:
    static MatchSettings shortMatch()
    {
        MatchSettings settings;
        settings.scoreLimit = 2;
        settings.timeLimit = 20;
        return settings;
    }
    ShortMatchTest() : MatchTest(shortMatch()) {}

    std::optional<MatchResult> playUntilResult(int seconds)
    {
        for (int i = 0; i < seconds * 60; ++i) {
            step();
            if (const auto result = match.takeResult()) {
                return result;
            }
        }
        return std::nullopt;
    }
};

}  // namespace

TEST_F(MatchTest, AShotIsAnnouncedPassesAFriendAndEndsAtTheFirstEnemy)
{
    const ObjectId shooter = place({0, 0, 0});
    const ObjectId farEnemy = place({0, 0, 120});
    const ObjectId friendly = place({0, 0, 40});
    const ObjectId nearEnemy = place({0, 0, 80});
    heard = {};
    fireOnce(shooter);
    ASSERT_EQ(heard.infos.size(), 1U);
    const Vantor::ObjectInfo& shot = heard.infos[0];
    EXPECT_EQ(shot.objecttype(), shotType);
    EXPECT_EQ(shot.orientation().w(), 1.0F);
    EXPECT_EQ(shot.projectiledata().velocity().z(), Rules().shotSpeed);
    EXPECT_TRUE(shot.projectiledata().blueteam());
    EXPECT_EQ(shot.timestamp(), match.timestamp());

    step(60);
    EXPECT_EQ(health(shooter) + health(friendly) + health(farEnemy), 3 * Rules().fullHealth);
    EXPECT_EQ(health(nearEnemy), Rules().fullHealth - Rules().shotDamage);
    EXPECT_TRUE(match.allShots().empty());
    ASSERT_EQ(heard.destroys.size(), 1U);
    EXPECT_EQ(heard.destroys[0].id(), shot.id());
}

TEST_F(MatchTest, ShotsComeAtTheReloadRateAndEndAtTheirRange)
{
    const ObjectId shooter = place({0, 0, -300});
    hold(shooter, control::fire);
    step(119);
    hold(shooter, 0);
    EXPECT_EQ(match.allShots().size(), 8U);
    const float farthest = Rules().shotRange + Rules().muzzleDistance + 4.0F;  // one step of flight more
    for (int i = 0; i < 300; ++i) {
        step();
        for (const Shot& shot : match.allShots()) {
            ASSERT_LT(shot.position.z, -300.0F + farthest);
        }
    }
    EXPECT_EQ(heard.destroys.size(), 8U);
}

TEST_F(MatchTest, AKillScoresLeavesExplosionsAndTheVictimReturnsWholeUnderItsId)
{
    const ObjectId shooter = place({0, 0, 0});
    const ObjectId victim = place({0, 0, 50});
    match.editShip(victim)->health = 5.0F;
    fireOnce(shooter);
    step(60);
    EXPECT_EQ(match.findShip(shooter)->score, 1);
    EXPECT_EQ(match.findShip(victim)->deaths, 1);
    EXPECT_EQ(match.teamScore(Team::blue), 1);
    EXPECT_EQ(match.teamScore(Team::red), 0);
    EXPECT_EQ(heard.destroys.size(), 1U + 1U + 3U);  // shot, ship, debris
    for (const auto& destroy : heard.destroys) {
        EXPECT_TRUE(std::any_of(heard.infos.begin(), heard.infos.end(),
                                [&](const auto& info) { return info.id() == destroy.id(); }));
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
    match.editShip(place({0, 0, 50}))->health = 5.0F;
    const ObjectId dead = placeDead({300, 0, 0});
    fireOnce(shooter);
    for (const ObjectId id : {shooter, dead, dead}) {
        match.removeShip(id);
    }
    place({-300, 0, 0});
    ASSERT_EQ(heard.destroys.size(), 1U);
    EXPECT_EQ(heard.destroys[0].id(), shooter);
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
    EXPECT_TRUE(heard.destroys.empty());
    step(10);
    EXPECT_EQ(heard.destroys.size(), 1U);
}

TEST_F(MatchTest, ShotsInheritTheShipsVelocity)
{
    const ObjectId shooter = place({0, 0, 0});
    match.editShip(shooter)->velocity = {60, 0, 0};
    fireOnce(shooter);
    const Vector3 inherited = match.findShip(shooter)->velocity;
    ASSERT_EQ(match.allShots().size(), 1U);
    EXPECT_EQ(match.allShots()[0].velocity, inherited + Vector3(0, 0, Rules().shotSpeed));
}

TEST_F(NoLimitsTest, AShipThatCrossesAShotsPathWithinOneStepIsHit)
{
    const ObjectId shooter = place({0, 0, 0});
    const ObjectId target = place({100, 0, 200});
    fireOnce(shooter);
    step(10);
    const Shot shot = match.allShots()[0];
    Ship& ship = *match.editShip(target);
    ship.position = shot.position + shot.velocity * (Match::stepTime / 2) + Vector3(0, 40, 0);
    ship.velocity = Vector3(0, -80, 0) * (1.0F / Match::stepTime);  // 40 units from the path before and after
    step();
    EXPECT_LT(health(target), Rules().fullHealth);
}

TEST_F(FriendlyFireTest, SparesTheShooterAloneAndCountsAgainstHim)
{
    const ObjectId shooter = place({0, 0, 0});
    place({200, 0, 0});
    const ObjectId friendly = place({0, 0, 80});
    match.editShip(friendly)->health = 5.0F;
    fireOnce(shooter);
    match.editShip(shooter)->position = {0, 0, 40};  // into the way of his own shot
    step(60);
    EXPECT_EQ(health(shooter), Rules().fullHealth);
    EXPECT_FALSE(match.findShip(friendly)->alive);
    EXPECT_EQ(match.findShip(shooter)->score, -1);
    EXPECT_EQ(match.teamScore(Team::blue), -1);
    EXPECT_EQ(match.teamScore(Team::red), 0);
}

TEST_F(ShortMatchTest, EndsAtTheScoreLimitAndTheNextOneStartsWithNoScores)
{
    const ObjectId shooter = place({0, 0, 0});
    const ObjectId victims[] = {place({0, 0, 50}), place({50, 50, 0}), place({0, 0, 70})};
    match.removeShip(victims[1]);
    for (const ObjectId victim : {victims[0], victims[2]}) {
        match.editShip(victim)->team = Team::red;
        match.editShip(victim)->health = 5.0F;
    }
    hold(shooter, control::fire);
    const auto result = playUntilResult(3);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->blueScore, 2);
    ASSERT_EQ(result->standings.size(), 3U);
    EXPECT_EQ(result->standings[0].kills, 2);
    EXPECT_EQ(result->standings[2].deaths, 1);
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

TEST_F(ShortMatchTest, EndsAtTheTimeLimitMeasuredFromItsOwnStart)
{
    place({0, 0, 0});
    for (const unsigned number : {1U, 2U}) {
        const auto result = playUntilResult(27);
        ASSERT_TRUE(result);
        EXPECT_EQ(result->number, number);
        EXPECT_EQ(result->seconds, 20U);
        EXPECT_EQ(scoreTable(*result),
                  (std::vector<std::string>{
                      "match " + std::to_string(number) + " over after 0:20: a draw, blue 0 red 0",
                      "  blue Pilot 1            0 kills    0 deaths"}));
    }
}

TEST(StartPoints, EveryModeLaysOutItsOwnWayAndShipsNeverOverlap)
{
    const struct
    {
        General::Mode mode;
        float sideways;  ///< |x| of a team's own side; 0: both teams share the field
        float spread;    ///< units that ships may be away from their team's point
    } cases[] = {
        {General::FIXED, 500.0F, 105.0F}, {General::RANDOM, 500.0F, 175.0F}, {General::GRID, 0.0F, 400.0F}};
    for (const auto& c : cases) {
        MatchSettings settings;
        settings.spawn = c.mode;
        Match match(settings);
        SceneMirror mirror;
        match.addObserver(&mirror);
        for (int i = 0; i < 16; ++i) {
            match.addBot();
        }
        std::set<float> xs;
        for (const Ship& ship : match.allShips()) {
            const float side = ship.team == Team::blue ? -1.0F : 1.0F;
            EXPECT_LE(ship.position.distance({side * c.sideways, 0, 0}), c.spread) << c.mode;
            xs.insert(ship.position.x);
            for (const Ship& other : match.allShips()) {
                EXPECT_TRUE(ship.id == other.id || ship.position.distance(other.position) > 13.0F) << c.mode;
            }
        }
        // The grid grows with the scene: with 15 ships in it, five slots 100 apart.
        EXPECT_EQ(xs.count(-150.0F) + xs.count(50.0F) > 0, c.mode == General::GRID);
    }
}

TEST(StartPoints, AreTheSameForTheSameSeedWhateverElseDrawsFromTheCLibrary)
{
    const auto firstPosition = [](std::uint32_t seed) {
        std::rand();
        MatchSettings settings;
        settings.spawn = General::RANDOM;
        settings.seed = seed;
        Match match(settings);
        return match.findShip(match.addHuman())->position;
    };
    const Vector3 position = firstPosition(4);
    EXPECT_EQ(position, firstPosition(4));
    EXPECT_FALSE(position == firstPosition(5));
}

TEST(SceneMirror, HoldsOneObjectForEachLivingShipAndShotAndNothingAfterwards)
{
    const auto count = [](SceneGraphType type) {
        return SceneGraph::getInstance()->getListOfType(type)->size();
    };
    {
        Match match((MatchSettings()));
        SceneMirror mirror;
        match.addObserver(&mirror);
        for (int i = 0; i < 16; ++i) {
            match.addBot();
        }
        for (int i = 0; i < 3600; ++i) {
            match.step();
            SceneMirror::apply();
        }
        EXPECT_GT(match.teamScore(Team::red) + match.teamScore(Team::blue), 0);
        const auto alive = std::count_if(match.allShips().begin(), match.allShips().end(),
                                         [](const Ship& ship) { return ship.alive; });
        EXPECT_EQ(count(SGT_PLAYER), static_cast<std::size_t>(alive));
        EXPECT_EQ(count(SGT_PROJECTILE), match.allShots().size());
    }
    EXPECT_EQ(count(SGT_PLAYER) + count(SGT_PROJECTILE), 0U);
}
