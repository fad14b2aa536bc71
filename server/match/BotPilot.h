#pragma once

#include "server/match/BotSkill.h"
#include "server/match/Random.h"
#include "server/match/Rules.h"
#include "server/match/Ship.h"
#include "server/match/ShipView.h"

#include <cstdint>
#include <vector>

namespace practice {

/// What a bot may know: its own ship aside, no more than any client is told.
struct BotView
{
    const std::vector<ShipView>& shipViews;  ///< of all living ships, its own among them
    const Rules& rules;
    float time;  ///< seconds since the server started
    float dt;    ///< seconds since the bots last thought
};

/// Flies one ship with the same controls a human has.
///
/// A guard keeps to the space around its own carrier, a raider to that around the enemy's. There it goes for
/// a near enemy whom few of its side are after, leads its aim, strafes, breaks away when it gets too close or
/// is hit, and keeps clear of other ships. It leaves alone who has just appeared and has not fired.
class BotPilot
{
public:
    enum class Role : std::uint8_t
    {
        guard,
        raider
    };

    BotPilot(ObjectId ship_, Role role_, const BotSkill& skill_) : ship(ship_), role(role_), skill(skill_) {}

    ObjectId shipId() const { return ship; }

    ShipInput steer(const Ship& self, const BotView& view, Random& random);

private:
    ObjectId ship;
    Role role;
    BotSkill skill;
    ObjectId target = noObject;
    float choiceIn = 0.0F;   ///< seconds until the target is chosen anew
    float aimIn = 0.0F;      ///< seconds until the aim error changes
    float strafeIn = 0.0F;   ///< seconds until the strafing direction changes
    float breakAway = 0.0F;  ///< seconds left of a break-away
    float burst = 0.0F;      ///< seconds of fire left; negative in the pause after it
    bool goingBack = false;
    float lastHealth = 0.0F;
    std::uint32_t strafe = 0;
    Quaternion aimError;
    Vector3 escape = Vector3(0, 0, 1);

    void passTime(const BotView& view, Random& random);
    void missAgain(Random& random);
    void noticeHits(const Ship& self, Random& random);
    void chooseTarget(const Ship& self, const BotView& view, const Vector3& front, Random& random);
    void startBreakAway(const Ship& self, Random& random);
    bool mustGoBack(const Ship& self, const Vector3& front, bool engaged);
    ShipInput attack(const Ship& self, const ShipView& enemy, const BotView& view, Random& random);
    ShipInput flyTowards(const Vector3& direction) const;
};

}  // namespace practice
