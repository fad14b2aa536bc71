#include "network/Timer.h"

#include "tests/network/FixedClock.h"

#include <gtest/gtest.h>

#include <tuple>

constexpr std::int64_t noon = 1700000000000;  // far above 2^32 milliseconds

TEST(Clock, RunsOnFromTheServersTimeAndWraps)
{
    // the server's time, the local clock at its start, what elapses, the time expected
    const std::tuple<unsigned int, std::int64_t, std::int64_t, unsigned int> table[] = {
        {4294967280U, noon, 32, 16},
        {5000, (std::int64_t{400} << 32) - 10, 30, 5030},  // the local clock's low bits wrap
        {5000, noon, -2000, 3000}};                        // the local clock is set back
    for (const auto& [serverTime, localStart, elapsed, expected] : table) {
        FixedClock clock(localStart);
        Timer::sync_clock(serverTime);
        clock.set(localStart + elapsed);
        EXPECT_EQ(Timer::getCurSyncedTime(), expected) << serverTime << " + " << elapsed;
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
