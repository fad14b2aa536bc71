#include "server/match/Shot.h"

#include "scene/LineSegment.h"
#include "scene/Sphere.h"
#include "server/match/Steering.h"

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

std::optional<float> contactTime(Vector3 offset, Vector3 motion, float reach)
{
    Vector3 centre;
    const Sphere hull(&centre, reach);
    const LineSegment path(&offset, &motion);
    if (!hull.collidesWith(path)) {
        return std::nullopt;
    }
    // The volumes answer generously: a hull beside the path's extension counts as met. So the time decides.
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
