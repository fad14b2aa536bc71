#include "server/match/Steering.h"

#include <algorithm>
#include <cmath>

namespace practice {

namespace {

/// The smallest positive root of a·t² + 2·b·t + c, or 0 when there is none.
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

}  // namespace

Quaternion turnTowards(const Quaternion& from, const Quaternion& to, float maxAngle)
{
    const float alignment = std::min(std::fabs(Quaternion::dotProduct(from, to)), 1.0F);
    const float angle = 2.0F * std::acos(alignment);
    if (angle <= maxAngle) {
        return to;
    }
    Quaternion turned = Quaternion::Slerp(from, to, maxAngle / angle);
    turned.normalise();
    return turned;
}

Quaternion lookAlong(const Vector3& direction)
{
    const float ground = std::hypot(direction.x, direction.z);
    const float yaw = std::atan2(direction.x, direction.z);
    const float pitch = -std::atan2(direction.y, ground);
    return Quaternion::FromAxisAngle(yaw, Vector3(0, 1, 0)) *
           Quaternion::FromAxisAngle(pitch, Vector3(1, 0, 0));
}

Vector3 noseOf(const Quaternion& orientation)
{
    return orientation.rotate(Vector3(0, 0, 1));
}

Vector3 leadDirection(const Vector3& offset, const Vector3& drift, float shotSpeed)
{
    const float time = firstPositiveRoot(drift.lengthSquared() - shotSpeed * shotSpeed,
                                         offset.dotProduct(drift), offset.lengthSquared());
    Vector3 direction = offset + drift * time;
    direction.normalise();
    return direction;
}

}  // namespace practice
