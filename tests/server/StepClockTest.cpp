#include "server/net/StepClock.h"

#include <gtest/gtest.h>

using namespace practice;
using namespace std::chrono_literals;

TEST(Steps, AreCaughtUpAfterADelayAndGivenUpAfterALongOne)
{
    StepClock clock(10ms);
    const StepClock::TimePoint start;
    clock.start(start);
    const auto stepsAt = [&](std::chrono::milliseconds time) {
        int steps = 0;
        while (clock.takeStep(start + time)) {
            ++steps;
        }
        return steps;
    };
    EXPECT_EQ(stepsAt(9ms), 0);
    EXPECT_EQ(stepsAt(10ms), 1);
    EXPECT_EQ(stepsAt(55ms), 4);
    EXPECT_EQ(clock.report(), "played 5 steps, latest 35.0 ms behind");
    EXPECT_EQ(stepsAt(1060ms), 1) << "a second of haste";
    EXPECT_EQ(clock.report(), "played 6 steps, latest 1000.0 ms behind, 1000.0 ms given up");
}
