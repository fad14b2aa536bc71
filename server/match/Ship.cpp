#include "server/match/Ship.h"

#include "server/match/Steering.h"

namespace practice {

namespace {

/// -1, 0 or 1: opposite keys held together cancel.
float axis(std::uint32_t controls, std::uint32_t positive, std::uint32_t negative)
{
    const int plus = (controls & positive) != 0 ? 1 : 0;
    const int minus = (controls & negative) != 0 ? 1 : 0;
    return static_cast<float>(plus - minus);
}

Vector3 limited(const Vector3& v, float longest)
{
    const float length = v.length();
    return length > longest ? v * (longest / length) : v;
}

/// The push of the border: nothing inside, growing with the distance outside.
Vector3 borderPush(const Vector3& position, const Rules& rules)
{
    const float distance = position.length();
    const float excess = distance - rules.borderRadius;
    return excess > 0.0F ? position * (-excess * rules.borderSpring / distance) : Vector3();
}

/// The spring alone holds ships under every normal rule set; this holds them under any.
void stayInside(Ship& ship, const Rules& rules)
{
    const float distance = ship.position.length();
    if (distance <= rules.borderLimit) {
        return;
    }
    const Vector3 outward = ship.position * (1.0F / distance);
    ship.position = outward * rules.borderLimit;
    const float escape = ship.velocity.dotProduct(outward);
    if (escape > 0.0F) {
        ship.velocity -= outward * escape;
    }
}

}  // namespace

Vector3 thrustDirection(std::uint32_t controls)
{
    Vector3 direction(axis(controls, control::left, control::right),
                      axis(controls, control::up, control::down),
                      axis(controls, control::forward, control::backward));
    direction.normalise();
    return direction;
}

void flyShip(Ship& ship, const Rules& rules, float dt)
{
    ship.orientation = turnTowards(ship.orientation, ship.input.orientation, rules.turnRate * dt);
    const Vector3 push = ship.orientation.rotate(thrustDirection(ship.input.controls)) * rules.thrust;
    ship.velocity += (push + borderPush(ship.position, rules)) * dt;
    ship.velocity = limited(ship.velocity * (1.0F - rules.damping * dt), rules.maxSpeed);
    ship.position += ship.velocity * dt;
    stayInside(ship, rules);
}

}  // namespace practice
