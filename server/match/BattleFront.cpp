#include "server/match/BattleFront.h"

#include <cmath>

namespace practice {

namespace {

constexpr Vector3 pivot(500.0F, 45.0F, -50.0F);  ///< above red's carrier; blue's has the opposite x
constexpr float distance = 240.0F;               ///< units from there, so beyond the bow, which is at 180
constexpr float swing = 0.2F;                    ///< rad to each side of the bow
constexpr float period = 150.0F;                 ///< seconds to and fro

}  // namespace

Vector3 battleFront(Team carrier, float time)
{
    constexpr float twoPi = 6.2831853F;
    const float angle = swing * std::sin(std::fmod(time, period) * (twoPi / period));
    const float side = carrier == Team::blue ? -1.0F : 1.0F;
    const Vector3 fromBow(-side * std::sin(angle), 0.0F, std::cos(angle));
    return Vector3(side * pivot.x, pivot.y, pivot.z) + fromBow * distance;
}

}  // namespace practice
