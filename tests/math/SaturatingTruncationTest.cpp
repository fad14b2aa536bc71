#include "math/SaturatingTruncation.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>

TEST(SaturatingTruncation, TruncatesTowardsZeroAndHoldsAtTheEndsOfInt)
{
    EXPECT_EQ(saturatingTruncation(2147483646.5), INT_MAX - 1);
    EXPECT_EQ(saturatingTruncation(-2147483647.5), INT_MIN + 1);
    for (const double beyond : {2147483648.0, HUGE_VAL}) {
        EXPECT_EQ(saturatingTruncation(beyond), INT_MAX);
        EXPECT_EQ(saturatingTruncation(-beyond - 1), INT_MIN);
    }
    EXPECT_EQ(saturatingTruncation(std::nan("")), 0);
}
