#include "Common/Protobuf/Object/Object.pb.h"
#include "network/Framing.h"
#include "server/match/Hull.h"
#include "server/match/Match.h"
#include "server/net/MatchBroadcast.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>

using namespace practice;

namespace {

template <class Message>
std::string textOf(Message message, const std::string& body)
{
    return framing::parseBody(message, body.data(), body.size()) ? message.ShortDebugString() : "malformed";
}

/// A match, and a transcript of what its clients receive. Ships placed by hand look along +z and belong to
/// alternating teams, blue first.
struct Game
{
    std::ostringstream transcript;
    Match match;
    MatchBroadcast broadcast{match, [this](const std::string& frame) { record(frame); }};

    explicit Game(const MatchSettings& settings) : match(settings) { match.addObserver(&broadcast); }

    void note(const std::string& line) { transcript << match.stepCount() << ' ' << line << '\n'; }

    void record(std::string frames)
    {
        while (const std::size_t length = framing::wholeFrameLength(frames.data(), frames.size())) {
            const char type = frames[2];
            const std::string body = frames.substr(3, length - 1);
            note(type == MessageTypes::OBJECT_INFO     ? "info " + textOf(Vantor::ObjectInfo(), body)
                 : type == MessageTypes::OBJECT_UPDATE ? "update " + textOf(Vantor::ObjectUpdate(), body)
                                                       : "destroy " + textOf(Vantor::ObjectDestroy(), body));
            frames.erase(0, 2 + length);
        }
    }
    void recordSnapshot()
    {
        for (const std::string& datagram : broadcast.takeSnapshot()) {
            note("datagram");
            record(datagram);
        }
    }
    /// Without health the ship is dead.
    ObjectId place(const Vector3& position, float health = Rules().fullHealth)
    {
        const ObjectId id = match.addHuman();
        Ship& ship = *match.editShip(id);
        ship.position = position;
        ship.health = health;
        ship.alive = health > 0.0F;
        ship.respawnIn = 100.0F;
        return id;
    }
    void hold(ObjectId id, std::uint32_t controls) { match.setInput(id, {Quaternion(), controls}); }
    void step(int times)
    {
        for (int i = 0; i < times; ++i) {
            match.step();
            broadcast.afterStep();
            if (const auto result = match.takeResult()) {
                for (const std::string& line : scoreTable(*result)) {
                    note(line);
                }
            }
        }
    }
    void fireOnce(ObjectId id)
    {
        hold(id, control::fire);
        step(1);
        match.releaseControls(id);
    }
    /// What differs is in the working folder, to be copied over the golden file where the change is intended.
    void expectTranscript(const std::string& name) const
    {
        std::ofstream(name + ".txt") << transcript.str();
        std::ifstream golden(VANTOR_GOLDEN "/" + name + ".txt");
        EXPECT_EQ(transcript.str(), std::string(std::istreambuf_iterator<char>(golden), {}));
    }
};

const MatchSettings twoKills{1, Difficulty::normal, General::FIXED, 2, 0};

}  // namespace

TEST(Match, AShotKillsTheFirstShipThatItMayHit)
{
    for (const bool friendlyFire : {false, true}) {
        MatchSettings settings = twoKills;
        settings.friendlyFire = friendlyFire;
        Game game(settings);
        const ObjectId shooter = game.place({0, 0, 0});
        const ObjectId enemy = game.place({0, 0, 60}, 5.0F);
        game.place({0, 0, 50}, 5.0F);  // a friend
        game.place({0, 0, 61});        // met in the same step as the enemy, but later
        game.place({0, 10, 0});
        game.place({0, 0, 20}, 0.0F);
        game.match.editShip(shooter)->velocity = {0, 6, 0};
        game.match.editShip(enemy)->velocity = {0, 3, 0};
        game.fireOnce(shooter);
        game.match.editShip(shooter)->alive = !friendlyFire;  // a dead shooter scores as well
        game.step(60);
        game.recordSnapshot();
        game.hold(enemy, control::fire | control::forward);  // the dead neither fly nor shoot
        game.step(160);
        game.match.setInput(enemy, {Quaternion::FromAxisAngle(1.0F, Vector3(0, 1, 0)), 0});
        game.step(40);  // the dead return
        game.recordSnapshot();
        game.expectTranscript(friendlyFire ? "friendly-fire" : "kill");
    }
}

TEST(Match, ChangedDataReplacesTheUpdateOfASnapshot)
{
    Game game(twoKills);
    const ObjectId shooter = game.place({0, 0, 0});
    game.place({0, 0, 10});
    game.place({0, 0, -80}, 0.0F);
    game.fireOnce(shooter);
    for (const std::string& frame : game.broadcast.introduction()) {
        game.record(frame);
    }
    game.step(5);  // the shot hits, but its end must wait
    game.recordSnapshot();
    game.recordSnapshot();
    game.step(12);
    game.recordSnapshot();
    game.expectTranscript("hit");
}

TEST(Match, ALeavingShooterVanishesOnceAndItsShotScores)
{
    Game game(twoKills);
    const ObjectId shooter = game.place({0, 0, 0});
    game.place({0, 0, 50}, 5.0F);
    const ObjectId dead = game.place({300, 0, 0}, 0.0F);
    game.fireOnce(shooter);
    for (const ObjectId id : {shooter, dead, dead}) {
        game.match.removeShip(id);
    }
    game.hold(shooter, control::fire);
    game.place({-300, 0, 0});  // in the smaller team
    game.step(60);
    game.recordSnapshot();
    game.match.endMatch();  // those who left keep their place in the table
    game.step(1);
    game.match.endMatch();
    game.step(1);
    game.expectTranscript("leave");
}

/// The first match ends by its score, the others by their time.
TEST(Match, OneMatchFollowsAnother)
{
    Game game({1, Difficulty::normal, General::FIXED, 2, 2});
    const ObjectId shooter = game.place({0, 0, 0});
    game.place({0, 0, 50}, 5.0F);
    game.place({0, 0, 0}, 0.0F);
    game.place({0, 0, 70}, 5.0F);
    game.hold(shooter, control::fire);
    game.step(60);
    game.match.releaseControls(shooter);
    for (int i = 0; i < 17; ++i) {
        game.match.addBot();  // has to wait
    }
    EXPECT_TRUE(game.broadcast.introduction().empty());
    game.step(820);
    EXPECT_FALSE(game.match.findShip(shooter)->firstLife);
    game.expectTranscript("matches");
}

TEST(Match, CarriersStopShots)
{
    const struct
    {
        Vector3 shooter;  ///< from the base; it looks along +z at an enemy 180 units ahead
        bool kills;
    } cases[] = {{{0, 30, -200}, false},    // the bridge is between
                 {{20, 30, -200}, true},    // beside it, over the hangar
                 {{0, 0, -30}, true},       // along the runway
                 {{53, -20, -200}, false},  // a pod
                 {{0, -20, -230}, false}};  // the stern
    for (const auto& c : cases) {
        Game game(twoKills);
        const ObjectId shooter = game.place(General::redBase + c.shooter);
        game.place(General::redBase + c.shooter + Vector3(0, 0, 180), 5.0F);
        game.fireOnce(shooter);
        game.step(55);
        EXPECT_EQ(game.match.findShip(shooter)->score, c.kills ? 1 : 0) << c.shooter.toString();
        EXPECT_TRUE(game.match.allShots().empty());
    }
}

TEST(StartPoints, LieApartAndOutsideTheHulls)
{
    for (const General::Mode mode : {General::FIXED, General::RANDOM, General::GRID}) {
        Match match({1, Difficulty::normal, mode});
        for (int i = 0; i < 32; ++i) {
            const ObjectId id = i % 2 == 0 ? match.addHuman() : match.addBot();
            const Ship& ship = *match.findShip(id);
            for (const Ship& other : match.allShips()) {
                EXPECT_TRUE(other.id == id || ship.position.distance(other.position) > 13.9F);
            }
            const float x = ship.team == Team::blue ? General::blueBase.x : General::redBase.x;
            EXPECT_EQ(ship.position.x == x, mode == General::FIXED && ship.human);
            EXPECT_EQ(wayOutOfHulls(ship.position, 4.0F), Vector3()) << ship.position.toString();
        }
    }
}
