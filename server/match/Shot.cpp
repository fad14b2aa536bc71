#include "server/match/Shot.h"

#include <cmath>

namespace practice {

Shot shotFrom(const Ship& ship, ObjectId id, const Rules& rules)
{
    const Vector3 nose = noseOf(ship.orientation);
    Shot shot;
    shot.id = id;
    shot.shooter = ship.id;
    shot.team = ship.team;
    shot.position = ship.position + nose * rules.muzzleDistance;
    shot.velocity = ship.velocity + nose * rules.shotSpeed;
    return shot;
}

Ship* firstHit(const Shot& shot, std::vector<Ship>& ships, const Rules& rules, bool friendlyFire, float dt,
               std::optional<float> end)
{
    Ship* hit = nullptr;
    float earliest = end.value_or(2.0F);  // 2: later than any contact
    for (Ship& ship : ships) {
        const bool isEnemy = ship.team != shot.team || friendlyFire;
        if (!ship.alive || !isEnemy || ship.id == shot.shooter) {
            continue;
        }
        const Vector3 shipBefore = ship.position - ship.velocity * dt;
        const auto contact =
            contactTime(shot.position - shipBefore, (shot.velocity - ship.velocity) * dt, rules.hitRadius);
        if (contact && *contact < earliest) {
            earliest = *contact;
            hit = &ship;
        }
    }
    return hit;
}

/// The earlier root of |offset + motion·t| = reach.
std::optional<float> contactTime(const Vector3& offset, const Vector3& motion, float reach)
{
    const float gap = offset.lengthSquared() - reach * reach;
    if (gap <= 0.0F) {
        return 0.0F;
    }
    const float approach = offset.dotProduct(motion);
    const float travel = motion.lengthSquared();
    const float discriminant = approach * approach - travel * gap;
    if (approach >= 0.0F || discriminant < 0.0F) {
        return std::nullopt;
    }
    const float time = (-approach - std::sqrt(discriminant)) / travel;
    return time <= 1.0F ? std::optional<float>(time) : std::nullopt;
}

}  // namespace practice
