#include "PracticeServer/BotPilot.h"

#include "PracticeServer/Steering.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace practice {

namespace {

constexpr float closeIn = 60.0F;    ///< units; farther from the enemy a bot flies at it, nearer it drifts
constexpr float tooClose = 30.0F;   ///< units; nearer it breaks away
constexpr float clearance = 22.0F;  ///< units kept from every other ship
constexpr float crowding = 70.0F;   ///< units of detour an enemy is worth less for each bot already after it
constexpr float fireCone = 0.999F;  ///< cosine of 2.6 degrees between nose and aim
constexpr float homeAgain = 0.6F;   ///< share of the home radius at which a returning bot turns to fight
constexpr float humanAppeal =
    0.75F;  ///< humans seem a little nearer than they are: a visitor shall see action

/// The keys that push towards a direction of the world.
std::uint32_t controlsTowards(const Vector3& direction, const Quaternion& orientation)
{
    const Vector3 local = (~orientation).rotate(direction);
    const float threshold = 0.4F * local.length();
    std::uint32_t controls = 0;
    controls |= local.x > threshold ? control::left : 0U;
    controls |= local.x < -threshold ? control::right : 0U;
    controls |= local.y > threshold ? control::up : 0U;
    controls |= local.y < -threshold ? control::down : 0U;
    controls |= local.z > threshold ? control::forward : 0U;
    controls |= local.z < -threshold ? control::backward : 0U;
    return controls;
}

/// The way out of the crowd; zero when nobody is near.
Vector3 awayFromOthers(const Ship& self, const std::vector<Ship>& ships)
{
    Vector3 away;
    for (const Ship& other : ships) {
        const Vector3 gap = self.position - other.position;
        if (other.alive && other.id != self.id && gap.lengthSquared() < clearance * clearance) {
            away += gap;
        }
    }
    return away;
}

const Ship* findLiving(const std::vector<Ship>& ships, ObjectId id)
{
    const auto found = std::find_if(ships.begin(), ships.end(), [id](const Ship& s) { return s.id == id; });
    return found != ships.end() && found->alive ? &*found : nullptr;
}

}  // namespace

ShipInput BotPilot::steer(const Ship& self, const BotView& view, Random& random)
{
    passTime(view, random);
    noticeHits(self, random);
    chooseTarget(self, view, random);
    const Ship* enemy = findLiving(view.ships, target);
    ShipInput input;
    if (mustGoHome(self, view.rules)) {
        input = flyTowards(-self.position);
    } else if (breakAway > 0.0F || enemy == nullptr) {
        input = flyTowards(escape);
    } else {
        input = attack(self, *enemy, view, random);
    }
    const Vector3 away = awayFromOthers(self, view.ships);
    if (!(away == Vector3())) {
        input.controls = (input.controls & control::fire) | controlsTowards(away, self.orientation);
    }
    return input;
}

void BotPilot::passTime(const BotView& view, Random& random)
{
    choiceIn -= view.dt;
    breakAway -= view.dt;
    aimIn -= view.dt;
    strafeIn -= view.dt;
    if (aimIn <= 0.0F) {
        aimIn = random.between(0.3F, 0.7F);
        const float error = view.rules.botAimError;
        const float yaw = random.between(-error, error);
        const float pitch = random.between(-error, error);
        aimError = Quaternion::FromAxisAngle(yaw, Vector3(0, 1, 0)) *
                   Quaternion::FromAxisAngle(pitch, Vector3(1, 0, 0));
    }
    if (strafeIn <= 0.0F) {
        strafeIn = random.between(0.6F, 1.4F);
        constexpr std::array<std::uint32_t, 6> dodges = {control::left,
                                                         control::right,
                                                         control::up,
                                                         control::down,
                                                         control::left | control::up,
                                                         control::right | control::down};
        strafe = dodges[static_cast<std::size_t>(random.between(0.0F, 6.0F))];
    }
}

/// A hit makes half of the bots break away at once; the others stay on their target.
void BotPilot::noticeHits(const Ship& self, Random& random)
{
    if (self.health < lastHealth && breakAway <= 0.0F && random.unit() < 0.5F) {
        startBreakAway(self, random);
    }
    lastHealth = self.health;
}

void BotPilot::chooseTarget(const Ship& self, const BotView& view, Random& random)
{
    const Ship* current = findLiving(view.ships, target);
    if (current != nullptr && current->grace <= 0.0F && choiceIn > 0.0F) {
        return;
    }
    choiceIn = random.between(2.0F, 4.0F);
    target = noObject;
    float least = std::numeric_limits<float>::max();
    for (const Ship& enemy : view.ships) {
        if (!enemy.alive || enemy.team == self.team || enemy.grace > 0.0F) {
            continue;
        }
        const float cost = reluctance(self, enemy, view);
        if (cost < least) {
            least = cost;
            target = enemy.id;
        }
    }
}

float BotPilot::reluctance(const Ship& self, const Ship& enemy, const BotView& view) const
{
    const auto chasers = std::count_if(view.bots.begin(), view.bots.end(), [&](const BotPilot& bot) {
        return bot.ship != ship && bot.target == enemy.id;
    });
    const float distance = self.position.distance(enemy.position) * (enemy.human ? humanAppeal : 1.0F);
    return distance + crowding * static_cast<float>(chasers);
}

void BotPilot::startBreakAway(const Ship& self, Random& random)
{
    breakAway = random.between(1.0F, 2.2F);
    const float x = random.between(-1.0F, 1.0F);
    const float y = random.between(-0.6F, 0.6F);
    const float z = random.between(-1.0F, 1.0F);
    escape = noseOf(self.orientation) + Vector3(x, y, z);
}

bool BotPilot::mustGoHome(const Ship& self, const Rules& rules)
{
    const float limit = goingHome ? rules.botHomeRadius * homeAgain : rules.botHomeRadius;
    goingHome = self.position.lengthSquared() > limit * limit;
    return goingHome;
}

ShipInput BotPilot::attack(const Ship& self, const Ship& enemy, const BotView& view, Random& random)
{
    const Vector3 offset = enemy.position - self.position;
    const float distance = offset.length();
    const Vector3 lead = leadDirection(offset, enemy.velocity - self.velocity, view.rules.shotSpeed);
    ShipInput input;
    input.orientation = lookAlong(lead) * aimError;
    input.controls = strafe | (distance > closeIn ? control::forward : 0U);
    const bool onTarget = noseOf(self.orientation).dotProduct(noseOf(input.orientation)) > fireCone;
    if (onTarget && distance < view.rules.botFireDistance) {
        input.controls |= control::fire;
    }
    if (distance < tooClose) {
        startBreakAway(self, random);
    }
    return input;
}

ShipInput BotPilot::flyTowards(const Vector3& direction) const
{
    return {lookAlong(direction), control::forward | strafe};
}

}  // namespace practice
