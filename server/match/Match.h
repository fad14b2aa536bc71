#pragma once

#include "server/match/Bot.h"
#include "server/match/MatchResult.h"
#include "server/match/Random.h"
#include "server/match/Rules.h"
#include "server/match/Ship.h"
#include "server/match/Shot.h"
#include "server/match/StartPoints.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace practice {

/// Receives the events of a match in their order.
///
/// The match calls it from within its own operations. An observer may read the match but not change it.
class MatchObserver
{
public:
    virtual ~MatchObserver() = default;

    virtual void shipAppeared(const Ship& ship) = 0;     ///< joined or returned from death
    virtual void shipVanished(const Ship& ship) = 0;     ///< died, or left while alive
    virtual void shipDataChanged(const Ship& ship) = 0;  ///< health, own score or a team's score
    virtual void shotFired(const Shot& shot) = 0;
    virtual void shotEnded(const Shot& shot) = 0;     ///< hit something or reached its range
    virtual void shipExploded(const Ship& ship) = 0;  ///< just before a dying ship vanishes
};

/// The rules of a match: ships, shots, scores and bots. It knows no sockets and no clock, and shares nothing
/// with other matches.
///
/// Time passes only in `step`. The same settings, rules and calls give the same match, bit for bit. One match
/// follows another: at the score or time limit all ships vanish, and after an intermission they start again
/// with no scores.
class Match
{
public:
    static constexpr float stepTime = 1.0F / 60.0F;  ///< seconds
    static constexpr unsigned stepsPerSecond = 60;

    /// Clients number their own explosions from 2 in the same table, so ours start far above.
    static constexpr ObjectId firstId = ObjectId(1) << 32U;

    explicit Match(const MatchSettings& settings_, const Rules& rules_ = Rules());

    /// Not owned; must outlive the match.
    void addObserver(MatchObserver* observer) { observers.push_back(observer); }

    /// Adds a ship flown by `setInput` to the team with fewer ships.
    ObjectId addHuman();
    /// Adds a ship that flies itself; bots alternate between the teams.
    ObjectId addBot();
    /// Takes a ship out of the match; its shots fly on. Ignores unknown ids.
    void removeShip(ObjectId id);

    /// Sets the pilot's wishes until the next call. The orientation must be a unit quaternion.
    void setInput(ObjectId id, const ShipInput& input);
    /// Releases all controls of a ship, for a pilot who fell silent.
    void releaseControls(ObjectId id);

    void step();

    /// The result of a match, once after it ended.
    std::optional<MatchResult> takeResult();
    /// Ends the match before its limits, unless it has not begun or is over.
    void endMatch();

    const std::vector<Ship>& allShips() const { return ships; }
    const std::vector<Shot>& allShots() const { return shots; }
    const Ship* findShip(ObjectId id) const;
    int teamScore(Team team) const { return team == Team::blue ? blueScore : redScore; }
    std::uint64_t stepCount() const { return steps; }
    /// Match time in milliseconds, wrapping like the timestamps of messages.
    std::uint32_t timestamp() const { return static_cast<std::uint32_t>(steps * 1000 / stepsPerSecond); }

    /// For set-ups that place ships by hand; null if the id is unknown.
    Ship* editShip(ObjectId id);

private:
    MatchSettings settings;
    Rules rules;
    Random random;
    StartPoints startPoints;
    std::vector<MatchObserver*> observers;
    std::vector<Ship> ships;
    std::vector<Shot> shots;
    std::vector<Bot> bots;
    ObjectId nextId = firstId;
    std::uint64_t steps = 0;
    std::uint64_t startStep = 0;    ///< of the present match
    float intermissionLeft = 0.0F;  ///< seconds; 0 during a match
    unsigned matchNumber = 1;
    std::optional<MatchResult> result;
    std::deque<MatchResult::Standing> departed;  ///< of this match, at most mostDeparted, the latest ones
    int redScore = 0;
    int blueScore = 0;
    unsigned humansJoined = 0;

    template <typename Subject>
    void notify(void (MatchObserver::*event)(const Subject&), const Subject& subject)
    {
        for (MatchObserver* observer : observers) {
            (observer->*event)(subject);
        }
    }

    ObjectId addShip(Team team, bool human, const std::string& name, Team fightsAt);
    Team smallerTeam() const;
    void spawn(Ship& ship);

    void steerBots();
    void flyShips();
    void moveShots();
    void applyHit(const Shot& shot, Ship& victim);
    void kill(Ship& victim, const Shot& shot);
    void announceScores(ObjectId preferred);
    void fireShots();
    void updateTimers();

    bool isOver() const;
    MatchResult makeResult() const;
    void startNextMatch();
};

}  // namespace practice
