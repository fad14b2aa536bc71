#include "network/Timer.h"

#include "tests/network/FixedClock.h"

#include <gtest/gtest.h>

constexpr std::int64_t noon = 1700000000000;  // far above 2^32 milliseconds

TEST(Clock, RunsOnFromTheServersTimeAndWraps)
{
    const struct
    {
        unsigned int serverTime;
        std::int64_t localStart, elapsed;
        unsigned int expected;
    } table[] = {{4294967280U, noon, 32, 16},
                 {5000, (std::int64_t{400} << 32) - 10, 30, 5030},  // the local clock's low bits wrap
                 {5000, noon, -2000, 3000}};                        // the local clock is set back
    for (const auto& row : table) {
        FixedClock clock(row.localStart);
        Timer::sync_clock(row.serverTime);
        clock.set(row.localStart + row.elapsed);
        EXPECT_EQ(Timer::getCurSyncedTime(), row.expected) << row.serverTime << " + " << row.elapsed;
    }
}

TEST(Stopwatch, MeasuresSinceTheLastCallInMilliseconds)
{
    FixedClock clock(noon);
    Timer stopwatch;
    clock.set(noon + 1500, 900);
    EXPECT_DOUBLE_EQ(stopwatch.getTimeDiff(), 1.5);
    clock.set(noon + 1516);
    EXPECT_NEAR(stopwatch.getTimeDiff(), 0.016, 1e-6);
}
