#include "server/match/BotPilot.h"

#include "server/match/BattleFront.h"
#include "server/match/Steering.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace practice {

namespace {

constexpr float closeIn = 60.0F;       ///< units; farther from the enemy a bot flies at it, nearer it drifts
constexpr float approachRate = 0.7F;   ///< units/s of closing speed for each unit still to go
constexpr float tooClose = 30.0F;      ///< units; nearer it breaks away
constexpr float clearance = 22.0F;     ///< units kept from every other ship
constexpr float crowding = 40.0F;      ///< units of detour an enemy is worth less for each friend after it
constexpr float strayCost = 0.3F;      ///< units of detour for each unit that an enemy is off the front
constexpr float guestAppeal = 0.35F;   ///< guests seem nearer than they are: they have come to see action
constexpr float fireCone = 0.999F;     ///< cosine of 2.6 degrees between nose and aim
constexpr float chaseCone = 0.97F;     ///< cosine of 14 degrees: who points at an enemy from near is after it
constexpr float chaseRange = 200.0F;   ///< units
constexpr float fireRange = 190.0F;    ///< units; farther away a bot holds its fire
constexpr float engageRange = 220.0F;  ///< units; an enemy this near is fought wherever it is
constexpr float backAgain = 0.6F;      ///< share of the front's radius at which a returning bot fights again
constexpr float burstTime = 1.0F;      ///< seconds of fire before a pause
constexpr float newcomersPeace = 22.0F;  ///< seconds for who has just joined, to look around
constexpr float returnersPeace = 4.0F;   ///< seconds for who has just returned

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
Vector3 awayFromOthers(const Ship& self, const std::vector<ShipView>& shipViews)
{
    Vector3 away;
    for (const ShipView& other : shipViews) {
        const Vector3 gap = self.position - other.position;
        if (other.id != self.id && gap.lengthSquared() < clearance * clearance) {
            away += gap;
        }
    }
    return away;
}

const ShipView* findView(const std::vector<ShipView>& shipViews, ObjectId id)
{
    const auto found =
        std::find_if(shipViews.begin(), shipViews.end(), [id](const ShipView& s) { return s.id == id; });
    return found == shipViews.end() ? nullptr : &*found;
}

/// Whether a decent pilot would fire at it: who has just appeared may look around, as long as it holds its
/// own fire.
bool isFairGame(const ShipView& enemy)
{
    return !enemy.peaceful || enemy.shownFor > (enemy.newcomer ? newcomersPeace : returnersPeace);
}

bool isAfter(const ShipView& friendly, const ShipView& enemy)
{
    const Vector3 way = enemy.position - friendly.position;
    const float distance = way.length();
    return distance < chaseRange && noseOf(friendly.orientation).dotProduct(way) > chaseCone * distance;
}

/// Far away at full thrust; near the enemy slow enough to keep it before the nose.
std::uint32_t throttle(float distance, float closingSpeed)
{
    const float wanted = (distance - closeIn) * approachRate;
    return closingSpeed < wanted ? control::forward : closingSpeed > wanted + 10.0F ? control::backward : 0U;
}

/// How far away an enemy seems: friends who are after it and a place off the front make it less worth.
float reluctance(const Ship& self, const ShipView& enemy, const BotView& view, const Vector3& front)
{
    const auto chasers =
        std::count_if(view.shipViews.begin(), view.shipViews.end(), [&](const ShipView& friendly) {
            return friendly.team == self.team && friendly.id != self.id && isAfter(friendly, enemy);
        });
    const float way = self.position.distance(enemy.position) + strayCost * front.distance(enemy.position);
    return way * (enemy.guest ? guestAppeal : 1.0F) + crowding * static_cast<float>(chasers);
}

}  // namespace

ShipInput BotPilot::steer(const Ship& self, const BotView& view, Random& random)
{
    const Team carrier = (self.team == Team::blue) == (role == Role::guard) ? Team::blue : Team::red;
    const Vector3 front = battleFront(carrier, view.time);
    passTime(view, random);
    noticeHits(self, random);
    chooseTarget(self, view, front, random);
    const ShipView* enemy = findView(view.shipViews, target);
    const bool engaged = enemy != nullptr && self.position.distance(enemy->position) < engageRange;
    ShipInput input;
    if (mustGoBack(self, front, engaged)) {
        input = flyTowards(front - self.position);
    } else if (breakAway > 0.0F || enemy == nullptr) {
        input = flyTowards(escape);
    } else {
        input = attack(self, *enemy, view, random);
    }
    const Vector3 away = awayFromOthers(self, view.shipViews);
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
    burst -= view.dt;
    if (aimIn <= 0.0F) {
        missAgain(random);
    }
    if (strafeIn <= 0.0F) {
        strafeIn = random.between(0.6F, 1.4F);
        constexpr std::array<std::uint32_t, 4> dodges = {control::left, control::right, control::up,
                                                         control::down};
        const std::uint32_t dodge = dodges[static_cast<std::size_t>(random.between(0.0F, 4.0F))];
        strafe = random.unit() < skill.agility ? dodge : 0U;
    }
    if (burst <= -skill.restraint) {
        burst = burstTime;
    }
}

void BotPilot::missAgain(Random& random)
{
    aimIn = skill.aimPeriod * random.between(0.6F, 1.4F);
    const float yaw = random.between(-skill.aimError, skill.aimError);
    const float pitch = random.between(-skill.aimError, skill.aimError);
    aimError =
        Quaternion::FromAxisAngle(yaw, Vector3(0, 1, 0)) * Quaternion::FromAxisAngle(pitch, Vector3(1, 0, 0));
}

void BotPilot::noticeHits(const Ship& self, Random& random)
{
    if (self.health < lastHealth && breakAway <= 0.0F && random.unit() < skill.evasion) {
        startBreakAway(self, random);
    }
    lastHealth = self.health;
}

void BotPilot::chooseTarget(const Ship& self, const BotView& view, const Vector3& front, Random& random)
{
    if (choiceIn > 0.0F && findView(view.shipViews, target) != nullptr) {
        return;
    }
    choiceIn = random.between(2.0F, 4.0F);
    target = noObject;
    float least = std::numeric_limits<float>::max();
    for (const ShipView& enemy : view.shipViews) {
        if (enemy.team == self.team || !isFairGame(enemy)) {
            continue;
        }
        const float cost = reluctance(self, enemy, view, front);
        if (cost < least) {
            least = cost;
            target = enemy.id;
        }
    }
}

void BotPilot::startBreakAway(const Ship& self, Random& random)
{
    breakAway = random.between(0.8F, 1.6F);
    const float x = random.between(-1.0F, 1.0F);
    const float y = random.between(-0.6F, 0.6F);
    const float z = random.between(-1.0F, 1.0F);
    escape = noseOf(self.orientation) + Vector3(x, y, z);
}

/// A bot that has strayed goes back a good way before it fights again, unless an enemy is upon it.
bool BotPilot::mustGoBack(const Ship& self, const Vector3& front, bool engaged)
{
    const float limit = goingBack ? frontRadius * backAgain : frontRadius;
    const float distance = self.position.distance(front);
    goingBack = distance > limit && (!engaged || distance > 2.0F * frontRadius);
    return goingBack;
}

ShipInput BotPilot::attack(const Ship& self, const ShipView& enemy, const BotView& view, Random& random)
{
    const Vector3 offset = enemy.position - self.position;
    const float distance = offset.length();
    const Vector3 lead = leadDirection(offset, enemy.velocity - self.velocity, view.rules.shotSpeed);
    ShipInput input;
    input.orientation = lookAlong(lead) * aimError;
    input.controls =
        strafe | throttle(distance, (self.velocity - enemy.velocity).dotProduct(offset) / distance);
    const bool onTarget = noseOf(self.orientation).dotProduct(noseOf(input.orientation)) > fireCone;
    if (onTarget && burst > 0.0F && distance < fireRange) {
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
