#include "server/balance/ScriptedPilots.h"

#include "server/match/Hull.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <deque>
#include <map>

namespace practice {

namespace {

constexpr float sightRange = 100.0F;  ///< within it a ship is at least 20 pixels long
constexpr float speckRange = 250.0F;  ///< beyond it a ship is a speck
constexpr float turn = 1.5708F * Match::stepTime;
constexpr std::size_t delaySteps = 15;  ///< 250 ms

/// Notes what happens to one ship of a match.
class Recorder : public MatchObserver
{
public:
    Recorder(const PilotView& view_, FlightRecord& record_)
        : view(view_), record(record_), health(view_.self.health)
    {
    }

    void afterStep()
    {
        bool sees = false;
        for (const Ship& ship : view.match.allShips()) {
            if (view.shows(ship, sightRange)) {
                lastSeen[ship.id] = view.time;
                sees = true;
            }
        }
        record.enemyInView += sees && view.time < 15.0F ? Match::stepTime : 0.0F;
        if (view.self.score > 0) {
            record.firstKill = std::min(record.firstKill, view.time);
        }
    }

private:
    const PilotView& view;
    FlightRecord& record;
    std::map<ObjectId, float> lastSeen;
    ObjectId shooter = noObject;
    float health;

    void shotEnded(const Shot& shot) override { shooter = shot.shooter; }
    void shipDataChanged(const Ship& ship) override { noteDamage(ship); }
    void shipExploded(const Ship& ship) override { noteDamage(ship); }
    void shipAppeared(const Ship& ship) override { health = &ship == &view.self ? ship.health : health; }
    void shipVanished(const Ship& /*ship*/) override {}
    void shotFired(const Shot& /*shot*/) override {}

    void noteDamage(const Ship& ship)
    {
        if (&ship != &view.self || ship.health >= health) {
            return;
        }
        health = ship.health;
        const auto seen = lastSeen.find(shooter);
        record.unseen.push_back(seen == lastSeen.end() ? FlightRecord::never : view.time - seen->second);
        record.firstDamage = std::min(record.firstDamage, view.time);
    }
};

class AverageHuman
{
public:
    ShipInput operator()(const PilotView& view)
    {
        seen.push_back(view.wayToNearest(speckRange));
        const Vector3 way = seen.front();
        if (seen.size() > delaySteps) {
            seen.pop_front();
        }
        const Quaternion& looks = view.self.input.orientation;
        if (way == Vector3()) {
            return {looks * smallTurn({0, 1, 0}, turn / 2.0F), control::forward};
        }
        static const std::array<Vector3, 6> errors{{{1, 0, 0},
                                                    {0.6F, 0.8F, 0},
                                                    {-0.28F, 0.96F, 0},
                                                    {-1, 0, 0},
                                                    {-0.6F, -0.8F, 0},
                                                    {0.28F, -0.96F, 0}}};
        const Vector3& error = errors[static_cast<std::size_t>(view.time * 2.0F) % errors.size()];
        const Quaternion aim = lookAlong(way) * smallTurn(error, 0.035F);
        const Quaternion turned = turnTowards(looks, aim, turn);
        const bool points = noseOf(view.self.orientation).dotProduct(noseOf(aim)) > 0.998F;
        return {turned, (way.length() > 60.0F ? control::forward : 0U) | (points ? control::fire : 0U)};
    }

private:
    std::deque<Vector3> seen;  ///< ways to enemies; zero if none was in view
};

}  // namespace

/// The client's view is 60 degrees high and 4:3. Its camera flies behind the ship and looks where the mouse
/// points, not where the nose points.
bool PilotView::shows(const Ship& ship, float range) const
{
    const Vector3 camera = self.position + self.orientation.rotate({0.0F, 2.0F, -5.0F});
    const Vector3 sight = ship.position - camera;
    const Vector3 local = (~self.input.orientation).rotate(sight);
    const float halfHeight = local.z * 0.57735F;
    return ship.alive && ship.team != self.team && local.z > 1.0F && local.length() < range &&
           std::fabs(local.y) < halfHeight && std::fabs(local.x) < halfHeight * 4.0F / 3.0F &&
           !hullContact(camera, sight);
}

Vector3 PilotView::wayToNearest(float range) const
{
    Vector3 nearest;
    for (const Ship& ship : match.allShips()) {
        if (shows(ship, range)) {
            nearest = ship.position - self.position;
            range = nearest.length();
        }
    }
    return nearest;
}

Pilot newcomer(float waits)
{
    return [waits](const PilotView& view) {
        return ShipInput{{}, view.time < waits ? 0 : control::forward | control::fire};
    };
}

Pilot averageHuman()
{
    return AverageHuman();
}

Match botMatch(const MatchSettings& settings)
{
    Match match(settings);
    for (int i = 0; i < 16; ++i) {
        match.addBot();
    }
    return match;
}

FlightRecord fly(std::uint32_t seed, Difficulty difficulty, float duration, const Pilot& pilot)
{
    Match match = botMatch({seed, difficulty, General::FIXED, 0, 0});
    for (unsigned i = 0; i < seed % 3 * 20 * Match::stepsPerSecond; ++i) {
        match.step();
    }
    FlightRecord record;
    PilotView view(match, *match.findShip(match.addHuman()));
    Recorder recorder(view, record);
    match.addObserver(&recorder);
    while (view.time < duration) {
        match.setInput(view.self.id, pilot(view));
        match.step();
        view.time += Match::stepTime;
        recorder.afterStep();
    }
    record.kills = view.self.score;
    record.deaths = view.self.deaths;
    return record;
}

}  // namespace practice
