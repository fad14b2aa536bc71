#include "math/SaturatingTruncation.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

TEST(SaturatingTruncation, TruncatesTowardsZeroAndHoldsAtTheEndsOfInt)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr int top = std::numeric_limits<int>::max();
    constexpr int bottom = std::numeric_limits<int>::min();
    const std::pair<double, int> table[] = {{1.99, 1},
                                            {-1.99, -1},
                                            {2147483646.5, top - 1},
                                            {2147483647.0, top},
                                            {2147483648.0, top},
                                            {infinity, top},
                                            {1e300, top},
                                            {-2147483647.5, bottom + 1},
                                            {-2147483648.0, bottom},
                                            {-2147483649.0, bottom},
                                            {-infinity, bottom},
                                            {std::numeric_limits<double>::quiet_NaN(), 0}};
    for (const auto& [value, expected] : table) {
        EXPECT_EQ(saturatingTruncation(value), expected) << value;
    }
}
