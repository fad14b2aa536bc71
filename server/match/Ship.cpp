#include "server/match/Ship.h"

#include "server/match/Hull.h"

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

/// The tangent of an angle of at most a quarter of a radian, to 1e-7.
///
/// Sines and cosines of the C library differ between its versions, so turns get along without them. Engines
/// that simulate the same on every machine do so too: Catto, "Determinism", box2d.org, 2024.
float tangentOfSmall(float angle)
{
    const float square = angle * angle;
    return angle * (1.0F + square * (1.0F / 3.0F + square * (2.0F / 15.0F + square * (17.0F / 315.0F))));
}

Vector3 limited(const Vector3& v, float longest)
{
    const float length = v.length();
    return length > longest ? v * (longest / length) : v;
}

/// The way back to the nearest fight. From behind a carrier it leads over the bridge, where nothing stops a
/// ship.
Vector3 wayHome(const Vector3& position)
{
    constexpr float bridgeFront = -80.0F;  // z from the base
    constexpr float bridgeHeight = 60.0F;  // above the fight's middle, to pass with room
    const Vector3 way = fightMiddle(position.x < 0.0F ? Team::blue : Team::red) - position;
    return position.z < bridgeFront ? way + Vector3(0.0F, bridgeHeight, 0.0F) : way;
}

/// The border's push on a ship that thrusts as given. It grows with the distance outside. Inside it lasts
/// until the ship is back at a fight, or thrusts in another direction than away from it.
Vector3 borderPush(Ship& ship, const Vector3& thrust, const Rules& rules)
{
    const float excess = ship.position.length() - rules.borderRadius;
    Vector3 home = wayHome(ship.position);
    const float distance = home.length();
    home.normalise();
    const bool steersHome = thrust.dotProduct(home) > -0.5F * thrust.length();
    if (excess > 0.0F) {
        ship.borderGrip = std::max(ship.borderGrip, std::min(excess / rules.borderDepth, 1.0F));
    } else if (distance < rules.returnRadius || steersHome) {
        ship.borderGrip = 0.0F;
    }
    return home * (rules.borderPush * ship.borderGrip);
}

/// Moves a ship out of a hull and takes the speed towards the hull away.
void slideAlongHulls(Ship& ship, const Rules& rules)
{
    Vector3 out = wayOutOfHulls(ship.position, rules.shipRadius);
    ship.position += out;
    out.normalise();
    ship.velocity -= out * std::min(ship.velocity.dotProduct(out), 0.0F);
}

}  // namespace

Vector3 fightMiddle(Team carrier)
{
    return {carrier == Team::blue ? -500.0F : 500.0F, 45.0F, 190.0F};
}

void flyShip(Ship& ship, const Rules& rules, float dt)
{
    ship.orientation = turnTowards(ship.orientation, ship.input.orientation, rules.turnRate * dt);
    const Vector3 push = ship.orientation.rotate(thrustDirection(ship.input.controls)) * rules.thrust;
    ship.velocity += (push + borderPush(ship, push, rules)) * dt;
    ship.velocity = limited(ship.velocity * (1.0F - rules.damping * dt), rules.maxSpeed);
    ship.position += ship.velocity * dt;
    slideAlongHulls(ship, rules);
}

Quaternion smallTurn(const Vector3& axis, float angle)
{
    Quaternion turn(1.0F, axis * tangentOfSmall(angle / 2.0F));
    turn.normalise();
    return turn;
}

Quaternion turnTowards(const Quaternion& from, const Quaternion& to, float maxAngle)
{
    Quaternion between = ~from * to;
    if (between.w < 0.0F) {  // the same orientation by the longer arc
        between = -between;
    }
    const Vector3 vector(between.x, between.y, between.z);
    const float sine = vector.length();  // of half the angle between them, as between.w is the cosine
    const float tangent = tangentOfSmall(maxAngle / 2.0F);
    if (sine <= tangent * between.w) {
        return to;
    }
    Quaternion turned = from * Quaternion(1.0F, vector * (tangent / sine));
    turned.normalise();
    return turned;
}

/// A turn by an angle is the quaternion (1 + cosine, axis * sine), scaled to unit length.
Quaternion lookAlong(const Vector3& direction)
{
    const float length = direction.length();
    const float ground = std::sqrt(direction.x * direction.x + direction.z * direction.z);
    Quaternion yaw(ground + direction.z, 0.0F, direction.x, 0.0F);
    if (direction.z < 0.0F) {  // the same turn, without the difference of two nearly equal numbers
        yaw =
            Quaternion(std::fabs(direction.x), 0.0F, std::copysign(ground - direction.z, direction.x), 0.0F);
    }
    if (ground == 0.0F) {
        yaw = Quaternion();
    }
    Quaternion orientation = yaw * Quaternion(length + ground, -direction.y, 0.0F, 0.0F);
    orientation.normalise();
    return orientation;
}

Vector3 noseOf(const Quaternion& orientation)
{
    const auto& [w, x, y, z] = orientation;
    return {2.0F * (x * z + w * y), 2.0F * (y * z - w * x), 2.0F * (w * w + z * z) - 1.0F};
}

}  // namespace practice
