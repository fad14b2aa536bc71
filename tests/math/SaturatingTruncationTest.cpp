#include "math/SaturatingTruncation.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>

TEST(SaturatingTruncation, TruncatesTowardsZeroAndHoldsAtTheEndsOfInt)
{
    EXPECT_EQ(saturatingTruncation(2147483646.5), INT_MAX - 1);
    EXPECT_EQ(saturatingTruncation(-2147483647.5), INT_MIN + 1);
    for (const double end : {2147483648.0, HUGE_VAL}) {
        EXPECT_EQ(saturatingTruncation(end - 1), INT_MAX) << end;
        EXPECT_EQ(saturatingTruncation(end), INT_MAX) << end;
        EXPECT_EQ(saturatingTruncation(-end - 1), INT_MIN) << end;
    }
    EXPECT_EQ(saturatingTruncation(std::nan("")), 0);
}
