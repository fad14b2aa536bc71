#pragma GCC diagnostic ignored "-Wold-style-cast"
#include "server/match/Hull.h"
#include "server/match/Match.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <deque>
#include <functional>
#include <map>

using namespace practice;

namespace {

constexpr float never = 1e6F;  ///< seconds

/// A human's match against 16 bots, and what the human has seen and suffered.
class Flight : public MatchObserver
{
public:
    Match match;
    ObjectId human;
    float seenTime = 0.0F;      ///< seconds of the first 15 with an enemy in view and near
    float firstDamage = never;  ///< seconds since the human joined
    float unseenFor = never;    ///< seconds since its first attacker was in view
    float firstKill = never;
    int kills = 0;
    int deaths = 0;
    float farthest = 0.0F;
    float time = 0.0F;

    Flight(std::uint32_t seed, Difficulty difficulty) : match({seed, difficulty, General::FIXED, 0, 0})
    {
        match.addObserver(this);
        for (int i = 0; i < 16; ++i) {
            match.addBot();
        }
        for (unsigned i = 0; i < seed % 3 * 20 * Match::stepsPerSecond; ++i) {
            match.step();  // some join late
        }
        human = match.addHuman();
        lastHealth = self().health;
    }

    const Ship& self() const { return *match.findShip(human); }

    /// Where the client draws it: 60 degrees high, 4:3, from behind the ship in the direction of the mouse.
    bool inView(const Ship& other, float range) const
    {
        const Ship& ship = self();
        const Vector3 camera = ship.position + ship.orientation.rotate(Vector3(0.0F, 2.0F, -5.0F));
        const Vector3 offset = (~ship.input.orientation).rotate(other.position - camera);
        const float height = offset.z * 0.57735F;
        return other.alive && other.team != ship.team && offset.length() < range && offset.z > 1.0F &&
               std::fabs(offset.y) < height && std::fabs(offset.x) < height * 4.0F / 3.0F &&
               !hullContact(camera, other.position - camera);
    }

    void step()
    {
        match.step();
        time += Match::stepTime;
        bool seen = false;
        for (const Ship& ship : match.allShips()) {
            if (self().alive && inView(ship, 100.0F)) {
                lastSeen[ship.id] = time;
                seen = true;
            }
        }
        seenTime += seen && time < 15.0F ? Match::stepTime : 0.0F;
        if (firstKill == never && self().score > 0) {
            firstKill = time;
        }
        kills = self().score;
        deaths = self().deaths;
    }

    void shipAppeared(const Ship& ship) override { lastHealth = ship.id == human ? ship.health : lastHealth; }
    void shipVanished(const Ship& /*ship*/) override {}
    void shipDataChanged(const Ship& ship) override
    {
        if (ship.id == human && ship.health < lastHealth && firstDamage == never) {
            firstDamage = time;
            unseenFor = lastSeen.count(attacker) ? time - lastSeen[attacker] : never;
        }
    }
    void shotFired(const Shot& /*shot*/) override {}
    void shotEnded(const Shot& shot) override { attacker = shot.shooter; }
    void shipExploded(const Ship& /*ship*/) override {}

private:
    float lastHealth = 0.0F;
    ObjectId attacker = noObject;
    std::map<ObjectId, float> lastSeen;
};

/// Turns at most 90 degrees a second towards the nearest enemy in view as it was 250 ms ago, aims 2 degrees off,
/// fires when it points. Looks around to the left when there is none.
class AverageHuman
{
public:
    explicit AverageHuman(std::uint32_t seed) : random(seed) {}

    ShipInput steer(const Flight& flight)
    {
        const Ship& self = flight.self();
        const Ship* nearest = nullptr;
        for (const Ship& ship : flight.match.allShips()) {
            if (flight.inView(ship, 300.0F) && (nearest == nullptr || ship.position.distanceSquared(self.position) <
                                                    nearest->position.distanceSquared(self.position))) {
                nearest = &ship;
            }
        }
        seen.push_back({nearest != nullptr, nearest ? nearest->position : Vector3()});
        if (seen.size() < 16) {
            return {self.input.orientation, 0};
        }
        const auto [found, place] = seen.front();
        seen.pop_front();
        if (steps++ % 30 == 0) {
            const float x = random.between(-1.0F, 1.0F);
            Vector3 axis(x, random.between(-1.0F, 1.0F), 0.0F);
            axis.normalise();
            aimError = smallTurn(axis, 0.035F);
        }
        const Quaternion before = self.input.orientation;
        if (!found) {
            return {before * smallTurn(Vector3(0, 1, 0), maxTurn / 2.0F), control::forward};
        }
        const Vector3 offset = place - self.position;
        const Quaternion wanted = lookAlong(offset) * aimError;
        const float alignment = std::min(std::fabs(before.dotProduct(wanted)), 1.0F);
        const float angle = 2.0F * std::acos(alignment);
        Quaternion turned = angle <= maxTurn ? wanted : Quaternion::Slerp(before, wanted, maxTurn / angle);
        turned.normalise();
        ShipInput input{turned, 0};
        if (offset.length() > 60.0F) {
            input.controls |= control::forward;
        }
        if (noseOf(self.orientation).dotProduct(noseOf(wanted)) > 0.998F && offset.length() < 200.0F) {
            input.controls |= control::fire;
        }
        return input;
    }

private:
    static constexpr float maxTurn = 1.5708F * Match::stepTime;
    Random random;
    std::deque<std::pair<bool, Vector3>> seen;
    unsigned steps = 0;
    Quaternion aimError;
};

}  // namespace

TEST(Pilots, Report)
{
    const char* seedsText = std::getenv("SEEDS");
    const unsigned seeds = seedsText ? static_cast<unsigned>(std::atoi(seedsText)) : 40;
    const bool verbose = std::getenv("VERBOSE") != nullptr;
    for (const bool moves : {true, false}) {
        int seen = 0, late = 0, fair = 0, hurt = 0;
        for (unsigned seed = 1; seed <= seeds; ++seed) {
            Flight f(seed, Difficulty::normal);
            for (int i = 0; i < 60 * 60; ++i) {
                f.match.setInput(f.human, {Quaternion(), moves && i >= 240 ? control::forward | control::fire : 0U});
                f.step();
            }
            seen += f.seenTime >= 2.0F;
            hurt += f.firstDamage != never;
            late += f.firstDamage > 20.0F;
            fair += f.firstDamage > 20.0F && (f.firstDamage == never || f.unseenFor <= 3.0F);
            if (verbose) {
                std::printf("  seed %u: seen %.1f s, damage at %.1f, unseen for %.1f, kills %d deaths %d\n", seed,
                            (double)f.seenTime, (double)f.firstDamage, (double)f.unseenFor, f.kills, f.deaths);
            }
        }
        std::printf("moves %d: seen %d, late %d, fair %d, hurt %d\n", moves, seen, late, fair, hurt);
    }
    if (std::getenv("FIRST")) return;
    for (const Difficulty d : {Difficulty::easy, Difficulty::normal, Difficulty::hard}) {
        int early = 0, kills = 0, deaths = 0;
        const float limit = d == Difficulty::easy ? 60.0F : 90.0F;
        for (unsigned seed = 1; seed <= seeds; ++seed) {
            Flight f(seed, d);
            AverageHuman pilot(seed);
            for (int i = 0; i < 120 * 60; ++i) {
                f.match.setInput(f.human, pilot.steer(f));
                f.step();
            }
            early += f.firstKill <= limit;
            kills += f.kills;
            deaths += f.deaths;
            if (verbose) {
                std::printf("  seed %u: first kill %.1f, kills %d, deaths %d damage at %.1f\n", seed, (double)f.firstKill,
                            f.kills, f.deaths, (double)f.firstDamage);
            }
        }
        std::printf("difficulty %d: first kill in time %d, kills %d, deaths %d\n", (int)d, early, kills, deaths);
    }
}

TEST(Pilots, Balance)
{
    const char* seedsText = std::getenv("SEEDS");
    const unsigned seeds = seedsText ? static_cast<unsigned>(std::atoi(seedsText)) : 40;
    int wins[2] = {0, 0};
    int total[2] = {0, 0};
    for (unsigned seed = 1; seed <= seeds; ++seed) {
        Match match({seed, Difficulty::normal, General::FIXED, 0, 0});
        for (int i = 0; i < 16; ++i) {
            match.addBot();
        }
        for (int i = 0; i < 300 * 60; ++i) {
            match.step();
        }
        const int red = match.teamScore(Team::red), blue = match.teamScore(Team::blue);
        total[0] += red; total[1] += blue; wins[0] += red > blue; wins[1] += blue > red;
    }
    std::printf("wins red %d blue %d, kills red %d blue %d\n", wins[0], wins[1], total[0], total[1]);
}

TEST(Pilots, Trace)
{
    const char* text = std::getenv("SEED");
    Flight f(text ? static_cast<unsigned>(std::atoi(text)) : 1, Difficulty::normal);
    for (int i = 0; i < 15 * 60; ++i) {
        f.match.setInput(f.human, {Quaternion(), i >= 240 ? control::forward | control::fire : 0U});
        f.step();
        if (i % 30 == 0) {
            std::printf("%4.1f z %5.0f seen %.1f:", (double)f.time, (double)f.self().position.z, (double)f.seenTime);
            for (const Ship& s : f.match.allShips()) {
                const Vector3 o = s.position - f.self().position;
                if (s.team == Team::red && s.alive && o.length() < 300) {
                    std::printf("  %s(%.0f %.0f %.0f)%s", s.name.substr(0, 3).c_str(), (double)o.x, (double)o.y, (double)o.z, f.inView(s, 100) ? "*" : "");
                }
            }
            std::printf("\n");
        }
    }
}
