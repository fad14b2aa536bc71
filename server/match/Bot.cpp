#include "server/match/Bot.h"

#include "server/match/Hull.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace practice {

namespace {

// Distances are in world units.
constexpr float closeIn = 60.0F;       ///< beyond this distance a bot flies at its enemy, within it drifts
constexpr float approachRate = 0.7F;   ///< units/s of closing speed for each unit still to go
constexpr float tooClose = 30.0F;      ///< within this distance of its enemy it breaks away
constexpr float clearance = 22.0F;     ///< kept from every other ship
constexpr float fightRadius = 65.0F;   ///< around a fight's centre
constexpr float returnShare = 0.6F;    ///< of the radius, within which a returning bot fights again
constexpr float engageRange = 220.0F;  ///< a returning bot turns on an enemy this near
constexpr float fireRange = 190.0F;    ///< beyond it a bot holds its fire
constexpr float fireCone = 0.999F;     ///< cosine of 2.6 degrees between nose and aim
constexpr float burstTime = 1.0F;      ///< seconds of fire before a pause

// The cost of a target is a distance.
constexpr float offCentreCost = 0.3F;  ///< for each unit between the enemy and the fight's centre
constexpr float chaserCost = 40.0F;    ///< for each friend that chases the enemy
constexpr float humanFactor = 0.15F;   ///< humans seem nearer: they have come to see action
constexpr float chaseCone = 0.97F;     ///< cosine of 14 degrees: a ship chases the enemy that it points at
constexpr float chaseRange = 200.0F;

// How a bot shows itself to a human.
constexpr float showDistance = 70.0F;  ///< before the human's nose
constexpr float showWidth = 22.0F;     ///< to each side of it
constexpr float showPeriod = 5.0F;     ///< seconds for one turn to and fro
constexpr float viewRange = 95.0F;     ///< within it a human can tell a ship from a star
constexpr float viewCone = 0.9F;       ///< cosine of 26 degrees: before a human's eyes
constexpr float humanLeash = 450.0F;   ///< from a fight's centre; so far a bot follows a human

constexpr float respawnProtection = 4.0F;  ///< seconds, until the ship fires

constexpr float hullMargin = 25.0F;    ///< kept from the carriers' hulls ...
constexpr float hullLookAhead = 0.8F;  ///< ... at the place to be reached in so many seconds

/// The controls that push towards a direction of the world.
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

/// The direction away from hulls ahead and all ships within the clearance; zero if there are none.
Vector3 awayFromOthers(const Ship& self, const std::vector<ShipView>& ships)
{
    Vector3 away = wayOutOfHulls(self.position + self.velocity * hullLookAhead, hullMargin);
    for (const ShipView& other : ships) {
        const Vector3 gap = self.position - other.position;
        if (other.id != self.id && gap.lengthSquared() < clearance * clearance) {
            away += gap;
        }
    }
    return away;
}

const ShipView* findView(const std::vector<ShipView>& ships, ObjectId id)
{
    const auto found =
        std::find_if(ships.begin(), ships.end(), [id](const ShipView& s) { return s.id == id; });
    return found == ships.end() ? nullptr : &*found;
}

/// Bots do not fire at a ship that has just appeared. A human's first life is spared also while it fires.
bool hasSpawnProtection(const ShipView& ship, const BotSkill& skill)
{
    if (ship.human && ship.firstLife) {
        return ship.sinceSpawn <= skill.newcomerProtection;
    }
    return !ship.firedInLife && ship.sinceSpawn <= respawnProtection;
}

/// Whether a place lies within range before a ship's nose. `cone` is the cosine of the widest angle.
bool isBefore(const ShipView& ship, const Vector3& place, float cone, float range)
{
    const Vector3 offset = place - ship.position;
    const float distance = offset.length();
    return distance < range && noseOf(ship.orientation).dotProduct(offset) > cone * distance;
}

/// Bots of a team do not all turn on the same human, but those nearest to it.
bool mayTarget(const Ship& self, const ShipView& enemy, const BotView& view, const BotSkill& skill)
{
    if (enemy.team == self.team) {
        return false;
    }
    if (!enemy.human) {
        return !hasSpawnProtection(enemy, skill);
    }
    const float distance = self.position.distanceSquared(enemy.position);
    const auto nearer = std::count_if(view.ships.begin(), view.ships.end(), [&](const ShipView& friendly) {
        return friendly.team == self.team && !friendly.human &&
               friendly.position.distanceSquared(enemy.position) < distance;
    });
    return nearer < skill.packSize + (hasSpawnProtection(enemy, skill) ? 1 : 0);
}

float targetCost(const Ship& self, const ShipView& enemy, const BotView& view, const Vector3& centre)
{
    const auto chasers = std::count_if(view.ships.begin(), view.ships.end(), [&](const ShipView& friendly) {
        return friendly.team == self.team && friendly.id != self.id &&
               isBefore(friendly, enemy.position, chaseCone, chaseRange);
    });
    const float way =
        self.position.distance(enemy.position) + offCentreCost * centre.distance(enemy.position);
    return way * (enemy.human ? humanFactor : 1.0F) + chaserCost * static_cast<float>(chasers);
}

/// Full thrust from afar; near the enemy slow enough to keep it before the nose.
std::uint32_t throttle(float distance, float closingSpeed)
{
    const float wanted = (distance - closeIn) * approachRate;
    return closingSpeed < wanted ? control::forward : closingSpeed > wanted + 10.0F ? control::backward : 0U;
}

/// The smallest positive root of a·t² + 2·b·t + c, or 0 if there is none.
float firstPositiveRoot(float a, float b, float c)
{
    const float discriminant = b * b - a * c;
    if (discriminant < 0.0F || std::fabs(a) < 1e-6F) {
        return 0.0F;
    }
    const float root = std::sqrt(discriminant);
    const float early = std::min((-b - root) / a, (-b + root) / a);
    const float late = std::max((-b - root) / a, (-b + root) / a);
    return early > 0.0F ? early : std::max(late, 0.0F);
}

/// The unit direction in which a shot meets the enemy, or straight at an enemy that no shot can catch.
/// A shot inherits its shooter's velocity, so only relative motion counts.
Vector3 aimDirection(const Ship& self, const ShipView& enemy, float shotSpeed)
{
    const Vector3 offset = enemy.position - self.position;
    const Vector3 motion = enemy.velocity - self.velocity;
    const float time = firstPositiveRoot(motion.lengthSquared() - shotSpeed * shotSpeed,
                                         offset.dotProduct(motion), offset.lengthSquared());
    Vector3 direction = offset + motion * time;
    direction.normalise();
    return direction;
}

}  // namespace

BotSkill drawSkill(Difficulty difficulty, Random& random)
{
    BotSkill skill;
    if (difficulty == Difficulty::easy) {
        skill.aimError = 0.15F;
        skill.aimPeriod = 0.9F;
        skill.dodgeShare = 0.3F;
        skill.burstPause = 3.5F;
        skill.packSize = 1;
        skill.stalkTime = 0.5F;
    } else if (difficulty == Difficulty::hard) {
        skill.aimError = 0.035F;
        skill.aimPeriod = 0.4F;
        skill.dodgeShare = 1.0F;
        skill.burstPause = 0.0F;
        skill.packSize = 8;
        skill.newcomerProtection = 8.0F;
        skill.stalkTime = 1e6F;  // it never breaks off
    }
    const float clumsiness = random.between(0.75F, 1.25F);
    skill.aimError *= clumsiness;
    skill.aimPeriod *= clumsiness;
    skill.breakAwayChance /= clumsiness;
    skill.dodgeShare /= clumsiness;
    skill.burstPause *= clumsiness;
    return skill;
}

Vector3 fightCentre(Team carrier, float time)
{
    constexpr float swing = 48.0F;    // units to each side
    constexpr float period = 150.0F;  // seconds for one swing to and fro
    const float phase = 2.0F * (time / period - std::floor(time / period)) - 1.0F;  // in [-1, 1)
    const float wave = 4.0F * phase * (1.0F - std::fabs(phase));  // parabolas instead of a sine
    return fightMiddle(carrier) + Vector3((carrier == Team::blue ? -swing : swing) * wave, 0.0F, 0.0F);
}

ShipInput Bot::steer(const Ship& self, const BotView& view, Random& random)
{
    const Vector3 centre = fightCentre(self.fightsAt, view.time);
    updateTimers(view, random);
    reactToHit(self, random);
    chooseTarget(self, view, centre, random);
    const ShipView* enemy = findView(view.ships, target);
    updateUnseen(self, enemy, view);
    updateReturning(self, centre, enemy);
    ShipInput input;
    if (returning) {
        input = flyTowards(centre - self.position);
    } else if (enemy == nullptr || (breakAwayLeft > 0.0F && !hasSpawnProtection(*enemy, skill))) {
        input = flyTowards(breakAwayDirection);
    } else if (showsItself(*enemy)) {
        input = passInFront(self, *enemy, view);
    } else {
        input = attack(self, *enemy, view, random);
    }
    const Vector3 away = awayFromOthers(self, view.ships);
    if (!(away == Vector3())) {
        input.controls = (input.controls & control::fire) | controlsTowards(away, self.orientation);
    }
    return input;
}

void Bot::updateTimers(const BotView& view, Random& random)
{
    for (float* timer : {&targetChoiceIn, &aimErrorIn, &dodgeIn, &breakAwayLeft, &burstLeft}) {
        *timer -= view.dt;
    }
    if (aimErrorIn <= 0.0F) {
        drawAimError(random);
    }
    if (dodgeIn <= 0.0F) {
        drawDodge(random);
    }
    if (burstLeft <= -skill.burstPause) {
        burstLeft = burstTime;
    }
}

void Bot::drawAimError(Random& random)
{
    aimErrorIn = skill.aimPeriod * random.between(0.6F, 1.4F);
    const float yaw = random.between(-skill.aimError, skill.aimError);
    const float pitch = random.between(-skill.aimError, skill.aimError);
    aimError = smallTurn(Vector3(0, 1, 0), yaw) * smallTurn(Vector3(1, 0, 0), pitch);
}

void Bot::drawDodge(Random& random)
{
    dodgeIn = random.between(0.6F, 1.4F);
    constexpr std::array<std::uint32_t, 4> dodges = {control::left, control::right, control::up,
                                                     control::down};
    const std::uint32_t drawn = dodges[static_cast<std::size_t>(random.between(0.0F, 4.0F))];
    dodge = random.unit() < skill.dodgeShare ? drawn : 0U;
}

void Bot::reactToHit(const Ship& self, Random& random)
{
    if (self.health < lastHealth && breakAwayLeft <= 0.0F && random.unit() < skill.breakAwayChance) {
        startBreakAway(self, random);
    }
    lastHealth = self.health;
}

void Bot::chooseTarget(const Ship& self, const BotView& view, const Vector3& centre, Random& random)
{
    const bool humanAppeared = std::any_of(view.ships.begin(), view.ships.end(), [&](const ShipView& other) {
        return other.human && other.team != self.team && other.sinceSpawn < view.dt;
    });
    if (targetChoiceIn > 0.0F && !humanAppeared && findView(view.ships, target) != nullptr) {
        return;
    }
    targetChoiceIn = random.between(1.5F, 3.0F);
    const ObjectId before = std::exchange(target, noObject);
    float least = std::numeric_limits<float>::max();
    for (const ShipView& enemy : view.ships) {
        if (!mayTarget(self, enemy, view, skill)) {
            continue;
        }
        const float cost = targetCost(self, enemy, view, centre);
        if (cost < least) {
            least = cost;
            target = enemy.id;
        }
    }
    if (target != before) {
        unseenFor = skill.stalkTime;  // first it has to show itself
    }
}

void Bot::startBreakAway(const Ship& self, Random& random)
{
    breakAwayLeft = random.between(0.8F, 1.6F);
    const float x = random.between(-1.0F, 1.0F);
    const float y = random.between(-0.6F, 0.6F);
    const float z = random.between(-1.0F, 1.0F);
    breakAwayDirection = noseOf(self.orientation) + Vector3(x, y, z);
}

/// A bot that has left the fight flies back well inside before it fights again. It fights an enemy on its
/// way, unless it is very far out.
void Bot::updateReturning(const Ship& self, const Vector3& centre, const ShipView* enemy)
{
    const float limit = returning ? fightRadius * returnShare : fightRadius;
    const float distance = self.position.distance(centre);
    const bool engaged = enemy != nullptr && self.position.distance(enemy->position) < engageRange &&
                         distance < (enemy->human ? humanLeash : 2.0F * fightRadius);
    returning = distance > limit && !engaged;
}

void Bot::updateUnseen(const Ship& self, const ShipView* enemy, const BotView& view)
{
    const bool seen = enemy != nullptr && isBefore(*enemy, self.position, viewCone, viewRange);
    unseenFor = seen ? 0.0F : unseenFor + view.dt;
}

bool Bot::showsItself(const ShipView& enemy) const
{
    return enemy.human && (hasSpawnProtection(enemy, skill) || unseenFor > skill.stalkTime);
}

/// Flies to and fro before the human's nose, as fast as the human.
ShipInput Bot::passInFront(const Ship& self, const ShipView& human, const BotView& view) const
{
    const float phase = view.time / showPeriod + static_cast<float>(ship % 8U) / 8.0F;
    const float sway = showWidth * (4.0F * std::fabs(phase - std::floor(phase) - 0.5F) - 1.0F);
    const Vector3 place = human.position + human.orientation.rotate(Vector3(sway, 0.0F, showDistance));
    const Vector3 correction = human.velocity + (place - self.position) * approachRate - self.velocity;
    const bool near = self.position.distanceSquared(human.position) < viewRange * viewRange;
    const Quaternion orientation = near ? lookAlong(noseOf(human.orientation)) : lookAlong(correction);
    return {orientation, controlsTowards(correction, self.orientation)};
}

ShipInput Bot::attack(const Ship& self, const ShipView& enemy, const BotView& view, Random& random)
{
    const Vector3 offset = enemy.position - self.position;
    const float distance = offset.length();
    const float closingSpeed = (self.velocity - enemy.velocity).dotProduct(offset) / distance;
    ShipInput input;
    input.orientation = lookAlong(aimDirection(self, enemy, view.rules.shotSpeed)) * aimError;
    input.controls = dodge | throttle(distance, closingSpeed);
    const bool onTarget = noseOf(self.orientation).dotProduct(noseOf(input.orientation)) > fireCone;
    if (onTarget && burstLeft > 0.0F && distance < fireRange) {
        input.controls |= control::fire;
    }
    if (distance < tooClose) {
        startBreakAway(self, random);
    }
    return input;
}

ShipInput Bot::flyTowards(const Vector3& direction) const
{
    return {lookAlong(direction), control::forward | dodge};
}

}  // namespace practice
