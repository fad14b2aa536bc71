#include "network/Timer.h"

#include "tests/network/FixedClock.h"

#include <gtest/gtest.h>

namespace {

constexpr std::int64_t noon = 1700000000000;  // some day's; far above 2^32 milliseconds

}  // namespace

TEST(Clock, BeforeSynchronisationIsTheLocalOneInWholeMilliseconds)
{
    Timer::clock = Timer::syncTime = 0;
    FixedClock clock(0);
    clock.set((std::int64_t{5} << 32) + 123, 999);
    EXPECT_EQ(Timer::getCurrentTime(), 21474836603);
    EXPECT_EQ(Timer::getCurSyncedTime(), 123U);
}

TEST(Clock, RunsOnFromTheServersTimeAndWraps)
{
    const struct
    {
        unsigned int serverTime;
        std::int64_t localStart, elapsed;
        unsigned int expected;
    } table[] = {{5000, noon, 0, 5000},
                 {5000, noon, 1234, 6234},
                 {4294967280U, noon, 32, 16},
                 {5000, (std::int64_t{400} << 32) - 10, 30, 5030},  // the local clock's low bits wrap
                 {5000, noon, -2000, 3000}};                        // the local clock is set back
    Timer::isSynced = false;
    for (const auto& row : table) {
        FixedClock clock(row.localStart);
        Timer::sync_clock(row.serverTime);
        clock.set(row.localStart + row.elapsed);
        EXPECT_EQ(Timer::getCurSyncedTime(), row.expected) << row.serverTime << " + " << row.elapsed;
    }
    EXPECT_FALSE(Timer::isSynced) << "left to the caller";
}

TEST(Stopwatch, MeasuresSinceTheLastCallInWholeMilliseconds)
{
    FixedClock clock(noon);
    Timer stopwatch;
    clock.set(noon + 1500);
    EXPECT_DOUBLE_EQ(stopwatch.getTimeDiff(), 1.5);
    clock.set(noon + 1500, 900);
    EXPECT_EQ(stopwatch.getTimeDiff(), 0.0);
    clock.set(noon + 1516);
    EXPECT_NEAR(stopwatch.getTimeDiff(), 0.016, 1e-6);
}
