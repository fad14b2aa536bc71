#pragma once

#include "server/match/BotPilot.h"
#include "server/match/MatchObserver.h"
#include "server/match/MatchResult.h"
#include "server/match/MatchSettings.h"
#include "server/match/Random.h"
#include "server/match/Rules.h"
#include "server/match/Ship.h"
#include "server/match/Shot.h"
#include "server/match/StartPoints.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace practice {

/// The rules of a match: ships, shots, scores and bots, and nothing of sockets or clocks.
///
/// Time passes only in `step`. The same settings, rules and calls give the same match, bit for bit; with
/// starting points on a grid, also the same scene is needed (see StartPoints). One match follows another: at
/// the score or time limit all ships vanish, and after an intermission they start anew with no scores.
class Match
{
public:
    static constexpr float stepTime = 1.0F / 60.0F;  ///< seconds
    static constexpr unsigned stepsPerSecond = 60;

    /// Clients number their own explosions from 2 in the same table, so ours start far above.
    static constexpr ObjectId firstId = ObjectId(1) << 32U;

    explicit Match(const MatchSettings& settings_, const Rules& rules_ = Rules());

    /// Not owned; must outlive the match. Observers hear of everything in the order in which they were added.
    void addObserver(MatchObserver* observer) { observers.push_back(observer); }

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

    /// How the match ended, once after the step in which it did.
    std::optional<MatchResult> takeResult();

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
    MatchSettings settings;
    Rules rules;
    Random random;
    StartPoints startPoints;
    std::vector<MatchObserver*> observers;
    std::vector<Ship> ships;
    std::vector<Shot> shots;
    std::vector<BotPilot> bots;
    std::vector<ShipView> shipViews;  ///< kept between steps for its memory alone
    ObjectId nextId = firstId;
    std::uint64_t steps = 0;
    std::uint64_t beganAt = 0;  ///< step at which the present match began
    float restLeft = 0.0F;      ///< seconds of intermission left
    unsigned matchNumber = 1;
    std::optional<MatchResult> result;
    int redScore = 0;
    int blueScore = 0;
    unsigned humansSeen = 0;

    template <typename Event>
    void tell(Event event)
    {
        for (MatchObserver* observer : observers) {
            event(*observer);
        }
    }

    ObjectId addShip(Team team, bool human, const std::string& name);
    Team smallerTeam() const;
    void enter(Ship& ship);
    int& scoreOf(Team team) { return team == Team::blue ? blueScore : redScore; }

    void steerBots();
    void flyShips();
    void fireShots();
    void fireFrom(Ship& ship);
    void moveShots();
    Ship* firstHit(const Shot& shot);
    bool mayHit(const Shot& shot, const Ship& ship) const;
    void strike(const Shot& shot, Ship& victim);
    void kill(Ship& victim, const Shot& shot);
    void showScores(ObjectId preferred);
    void passTime();

    bool isOver() const;
    void finish();
    MatchResult summary() const;
    void beginAnew();
};

}  // namespace practice
