#include "server/match/Ship.h"

#include <algorithm>
#include <cmath>

namespace practice {

namespace {

/// -1, 0 or 1; opposite keys held together cancel.
float axis(std::uint32_t controls, std::uint32_t positive, std::uint32_t negative)
{
    return ((controls & positive) != 0 ? 1.0F : 0.0F) - ((controls & negative) != 0 ? 1.0F : 0.0F);
}

/// The push of the pressed keys in the ship's own frame; zero or unit length.
Vector3 thrustDirection(std::uint32_t controls)
{
    Vector3 direction(axis(controls, control::left, control::right),
                      axis(controls, control::up, control::down),
                      axis(controls, control::forward, control::backward));
    direction.normalise();
    return direction;
}

/// Turns `from` towards `to` by at most `maxAngle` radians on the shorter arc; unit length.
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

Vector3 limited(const Vector3& v, float longest)
{
    const float length = v.length();
    return length > longest ? v * (longest / length) : v;
}

/// The acceleration by the border: zero inside, growing with the distance outside.
Vector3 borderPush(const Vector3& position, const Rules& rules)
{
    const float distance = position.length();
    const float excess = distance - rules.borderRadius;
    return excess > 0.0F ? position * (-excess * rules.borderSpring / distance) : Vector3();
}

/// Stops a ship at the border's limit. The default rules' spring never lets a ship get that far.
void stayInside(Ship& ship, const Rules& rules)
{
    const float distance = ship.position.length();
    if (distance <= rules.borderLimit) {
        return;
    }
    const Vector3 outward = ship.position * (1.0F / distance);
    ship.position = outward * rules.borderLimit;
    const float outwardSpeed = ship.velocity.dotProduct(outward);
    if (outwardSpeed > 0.0F) {
        ship.velocity -= outward * outwardSpeed;
    }
}

}  // namespace

void flyShip(Ship& ship, const Rules& rules, float dt)
{
    ship.orientation = turnTowards(ship.orientation, ship.input.orientation, rules.turnRate * dt);
    const Vector3 push = ship.orientation.rotate(thrustDirection(ship.input.controls)) * rules.thrust;
    ship.velocity += (push + borderPush(ship.position, rules)) * dt;
    ship.velocity = limited(ship.velocity * (1.0F - rules.damping * dt), rules.maxSpeed);
    ship.position += ship.velocity * dt;
    stayInside(ship, rules);
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

}  // namespace practice
