#pragma once

#include "PracticeServer/BotPilot.h"
#include "PracticeServer/MatchObserver.h"
#include "PracticeServer/Random.h"
#include "PracticeServer/Rules.h"
#include "PracticeServer/Ship.h"
#include "PracticeServer/Shot.h"

#include <cstdint>
#include <string>
#include <vector>

namespace practice {

/// The rules of a match: ships, shots, scores and bots, and nothing of sockets or clocks.
///
/// Time passes only in `step`. The same seed, rules and calls give the same match, bit for bit.
class Match
{
public:
    static constexpr float stepTime = 1.0F / 60.0F;  ///< seconds
    static constexpr unsigned stepsPerSecond = 60;

    /// Clients number their own explosions from 2 in the same table, so ours start far above.
    static constexpr ObjectId firstId = ObjectId(1) << 32U;

    /// Does not own the observer, which may be null and must outlive the match.
    explicit Match(std::uint32_t seed, MatchObserver* observer_ = nullptr, const Rules& rules_ = Rules());

    /// Adds a ship flown by `setInput` to the team with fewer ships.
    ObjectId addHuman();
    /// Adds a ship that flies itself; bots alternate between the teams.
    ObjectId addBot();
    /// Takes a ship out of the match; its shots fly on. Unknown ids are ignored.
    void removeShip(ObjectId id);

    /// What the ship's pilot wants from now on. The orientation must be a unit quaternion.
    void setInput(ObjectId id, const ShipInput& input);
    /// Lets go of every control of a ship, for a pilot who fell silent.
    void releaseControls(ObjectId id);

    void step();

    const std::vector<Ship>& allShips() const { return ships; }
    const std::vector<Shot>& allShots() const { return shots; }
    const Ship* findShip(ObjectId id) const;
    int teamScore(Team team) const { return team == Team::blue ? blueScore : redScore; }
    std::uint64_t stepCount() const { return steps; }
    /// Match time in milliseconds, wrapping like the wire's timestamps.
    std::uint32_t timestamp() const { return static_cast<std::uint32_t>(steps * 1000 / stepsPerSecond); }
    /// Differs, in all likelihood, between any two different states of ships, shots and scores.
    std::uint64_t stateHash() const;

    /// For set-ups that place ships by hand; null if the id is unknown.
    Ship* editShip(ObjectId id);

private:
    Rules rules;
    Random random;
    MatchObserver* observer;
    std::vector<Ship> ships;
    std::vector<Shot> shots;
    std::vector<BotPilot> bots;
    ObjectId nextId = firstId;
    std::uint64_t steps = 0;
    int redScore = 0;
    int blueScore = 0;
    unsigned humansSeen = 0;

    ObjectId addShip(Team team, bool human, const std::string& name);
    Team smallerTeam() const;
    void enter(Ship& ship);

    void steerBots();
    void flyShips();
    void fireShots();
    void fireFrom(Ship& ship);
    void moveShots();
    Ship* firstHit(const Shot& shot);
    void strike(const Shot& shot, Ship& victim);
    void kill(Ship& victim, ObjectId killer);
    void credit(ObjectId killer);
    void passTime();
};

}  // namespace practice
