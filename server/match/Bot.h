#pragma once

#include "server/match/Random.h"
#include "server/match/Rules.h"
#include "server/match/Ship.h"

#include <cstdint>
#include <vector>

namespace practice {

/// A bot's knowledge of a living ship: what the server sends to every client, or a client can derive from it.
struct ShipView
{
    ObjectId id = noObject;
    Team team = Team::red;
    bool human = false;  ///< a client knows it by its name
    Vector3 position;
    Vector3 velocity;  ///< units/s; a client derives it from two states
    Quaternion orientation;
    float sinceSpawn = 0.0F;   ///< seconds
    bool firstLife = false;    ///< appeared under a new id
    bool firedInLife = false;  ///< a shot has left its nose since it appeared
};

/// All that a bot may know besides its own ship.
struct BotView
{
    const std::vector<ShipView>& ships;  ///< all living ships, its own among them
    const Rules& rules;
    float time;  ///< seconds since the server started
    float dt;    ///< seconds since the bots' last turn
};

/// How well a bot flies and shoots; the defaults are those of normal difficulty.
struct BotSkill
{
    float aimError = 0.09F;            ///< rad, largest error on each axis
    float aimPeriod = 0.6F;            ///< seconds for which it keeps one error
    float breakAwayChance = 0.25F;     ///< when hit; in [0, 1]
    float dodgeShare = 0.6F;           ///< share of its fighting time in which it dodges sideways
    float burstPause = 1.8F;           ///< seconds between bursts of fire
    int packSize = 2;                  ///< bots of a team that turn on the same human
    float stalkTime = 2.0F;            ///< seconds for which it attacks a human who no longer sees it
    float newcomerProtection = 22.0F;  ///< seconds for which it spares a human's first life
};

/// One bot's skill: the difficulty's, better or worse by up to a quarter.
BotSkill drawSkill(Difficulty difficulty, Random& random);

/// The centre of the fight near a team's carrier. It swings before the carrier's bow, in view of ships that
/// have just started there. `time` in seconds.
Vector3 fightCentre(Team carrier, float time);

/// Flies one ship with the same controls as a human.
///
/// It stays in the fight near one of the carriers, and prefers near enemies that few of its friends chase. It
/// aims ahead of a moving enemy, dodges sideways, breaks away when it is hit or too close, and keeps clear of
/// other ships and the carriers' hulls. It spares ships that have just appeared. It weaves before the nose of
/// a new human, and of one who has not seen it lately, before it attacks.
class Bot
{
public:
    Bot(ObjectId ship_, const BotSkill& skill_) : ship(ship_), skill(skill_) {}

    ObjectId shipId() const { return ship; }

    /// The bot's turn, once a step while its ship is alive.
    ShipInput steer(const Ship& self, const BotView& view, Random& random);

private:
    ObjectId ship;
    BotSkill skill;
    ObjectId target = noObject;
    float targetChoiceIn = 0.0F;  ///< seconds until it chooses a target again
    float aimErrorIn = 0.0F;      ///< seconds until the aim error changes
    float dodgeIn = 0.0F;         ///< seconds until the dodge changes
    float breakAwayLeft = 0.0F;   ///< seconds left of a break-away
    float burstLeft = 0.0F;       ///< seconds of fire left; negative in the pause after it
    bool returning = false;       ///< flies back to the fight
    float lastHealth = 0.0F;
    float unseenFor = 0.0F;   ///< seconds since its target looked towards it
    std::uint32_t dodge = 0;  ///< the control held for it, or 0
    Quaternion aimError;
    Vector3 breakAwayDirection = Vector3(0, 0, 1);

    void updateTimers(const BotView& view, Random& random);
    void drawAimError(Random& random);
    void drawDodge(Random& random);
    void reactToHit(const Ship& self, Random& random);
    void chooseTarget(const Ship& self, const BotView& view, const Vector3& centre, Random& random);
    void startBreakAway(const Ship& self, Random& random);
    void updateReturning(const Ship& self, const Vector3& centre, const ShipView* enemy);
    void updateUnseen(const Ship& self, const ShipView* enemy, const BotView& view);
    bool showsItself(const ShipView& enemy) const;
    ShipInput passInFront(const Ship& self, const ShipView& human, const BotView& view) const;
    ShipInput attack(const Ship& self, const ShipView& enemy, const BotView& view, Random& random);
    ShipInput flyTowards(const Vector3& direction) const;
};

}  // namespace practice
