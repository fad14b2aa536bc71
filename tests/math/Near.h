#pragma once

#include "math/Quaternion.h"
#include "math/Vector3.h"

#include <gtest/gtest.h>

#include <cmath>

constexpr float nearness = 1e-5F;  ///< a few roundings of numbers around 1

template <class Value>
testing::AssertionResult isNear(const Value& actual, const Value& expected)
{
    if ((actual - expected).length() < nearness) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << actual.toString() << " instead of " << expected.toString();
}

/// The turn by an angle in degrees about an axis of unit length.
inline Quaternion turn(float degrees, Vector3 axis)
{
    const float half = degrees * 3.14159265F / 360.0F;
    return {std::cos(half), axis * std::sin(half)};
}
