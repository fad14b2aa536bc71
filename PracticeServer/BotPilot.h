#pragma once

#include "PracticeServer/Random.h"
#include "PracticeServer/Rules.h"
#include "PracticeServer/Ship.h"

#include <cstdint>
#include <vector>

namespace practice {

class BotPilot;

/// What a bot may know: everything that is in the match.
struct BotView
{
    const std::vector<Ship>& ships;
    const std::vector<BotPilot>& bots;
    const Rules& rules;
    float dt;  ///< seconds since the bots last thought
};

/// Flies one ship with the same controls a human has.
///
/// A bot goes for a near enemy whom few others chase, leads its aim, strafes, breaks away when it gets
/// too close or is hit, turns back when it strays from the fight and keeps clear of other ships.
class BotPilot
{
public:
    explicit BotPilot(ObjectId ship_) : ship(ship_) {}

    ObjectId shipId() const { return ship; }
    ObjectId targetId() const { return target; }

    ShipInput steer(const Ship& self, const BotView& view, Random& random);

private:
    ObjectId ship;
    ObjectId target = noObject;
    float choiceIn = 0.0F;   ///< seconds until the target is chosen anew
    float aimIn = 0.0F;      ///< seconds until the aim error changes
    float strafeIn = 0.0F;   ///< seconds until the strafing direction changes
    float breakAway = 0.0F;  ///< seconds left of a break-away
    bool goingHome = false;
    float lastHealth = 0.0F;
    std::uint32_t strafe = 0;
    Quaternion aimError;
    Vector3 escape = Vector3(0, 0, 1);

    void passTime(const BotView& view, Random& random);
    void noticeHits(const Ship& self, Random& random);
    void chooseTarget(const Ship& self, const BotView& view, Random& random);
    float reluctance(const Ship& self, const Ship& enemy, const BotView& view) const;
    void startBreakAway(const Ship& self, Random& random);
    bool mustGoHome(const Ship& self, const Rules& rules);
    ShipInput attack(const Ship& self, const Ship& enemy, const BotView& view, Random& random);
    ShipInput flyTowards(const Vector3& direction) const;
};

}  // namespace practice
