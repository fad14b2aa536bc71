#pragma once

#include <limits>

/// `value` truncated towards zero. A value outside int's range becomes the nearest int, and NaN becomes 0.
///
/// A plain conversion is undefined outside int's range, and values from the network are unbounded.
constexpr int saturatingTruncation(double value)
{
    if (value != value) {
        return 0;
    }
    if (value >= static_cast<double>(std::numeric_limits<int>::max())) {
        return std::numeric_limits<int>::max();
    }
    if (value <= static_cast<double>(std::numeric_limits<int>::min())) {
        return std::numeric_limits<int>::min();
    }
    return static_cast<int>(value);
}
