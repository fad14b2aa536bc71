#include "server/match/Hull.h"

#include "scene/General.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace practice {

namespace {

struct Box
{
    Vector3 low;
    Vector3 high;
};

/// World units from the base, bow along +z; both sides are alike. tools/art/carrier.py has the same parts
/// at heights 13 greater and, along the hull, 64 greater.
constexpr std::array<Box, 6> hull = {{
    {{-40, -39, -206}, {40, -1, -38}},  // aft, with the engines
    {{-31, -33, -38}, {31, -5, 30}},    // amidships
    {{-20, -24, -38}, {20, -5, 148}},   // deck, bow and catapult
    {{-27, -5, -160}, {27, 19, -38}},   // hangar
    {{-15, 18, -126}, {15, 51, -82}},   // bridge
    {{-64, -30, -170}, {64, -8, -20}},  // pods and their pylons
}};

const Vector3& nearestBase(const Vector3& place)
{
    return place.x < 0.0F ? General::blueBase : General::redBase;
}

/// The way by which a sphere leaves a box. A centre inside the box moves away from the box's middle.
Vector3 wayOut(const Box& box, const Vector3& centre, float radius)
{
    const Vector3 nearest(std::clamp(centre.x, box.low.x, box.high.x),
                          std::clamp(centre.y, box.low.y, box.high.y),
                          std::clamp(centre.z, box.low.z, box.high.z));
    Vector3 gap = centre - nearest;
    const float distance = gap.length();
    if (distance >= radius) {
        return {};
    }
    gap = distance > 0.0F ? gap : centre - (box.low + box.high) * 0.5F;
    gap.normalise();
    return gap * (radius - distance);
}

/// Narrows the span in which a motion is between two parallel planes.
void clip(float from, float motion, float low, float high, float& enter, float& leave)
{
    if (motion == 0.0F) {
        leave = from < low || from > high ? -1.0F : leave;
        return;
    }
    const float atLow = (low - from) / motion;
    const float atHigh = (high - from) / motion;
    enter = std::max(enter, std::min(atLow, atHigh));
    leave = std::min(leave, std::max(atLow, atHigh));
}

}  // namespace

Vector3 wayOutOfHulls(const Vector3& centre, float radius)
{
    const Vector3 start = centre - nearestBase(centre);
    Vector3 place = start;
    for (const Box& box : hull) {
        place += wayOut(box, place, radius);
    }
    return place - start;
}

std::optional<float> hullContact(const Vector3& from, const Vector3& motion)
{
    const Vector3 start = from - nearestBase(from);
    std::optional<float> earliest;
    for (const Box& box : hull) {
        float enter = 0.0F;
        float leave = 1.0F;
        clip(start.x, motion.x, box.low.x, box.high.x, enter, leave);
        clip(start.y, motion.y, box.low.y, box.high.y, enter, leave);
        clip(start.z, motion.z, box.low.z, box.high.z, enter, leave);
        if (enter <= leave && enter < earliest.value_or(2.0F)) {
            earliest = enter;
        }
    }
    return earliest;
}

}  // namespace practice
