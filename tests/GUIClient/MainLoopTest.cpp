#include "GUIClient/Helpers.h"
#include "network/Timer.h"
#include "tests/engine/FreshWorld.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

std::string order;
std::vector<std::int64_t> plannedTimes;
std::int64_t firstCall;
std::size_t callsWanted;

// Functions of the loop carry no data: they work on the variables above.
void stopper()
{
    order += 's';
    Helpers::stop();
}

void follower()
{
    order += 'f';
}

// Notes the time that the loop planned for this call.
void ticker()
{
    plannedTimes.push_back(mainLoopFunctionsList[0].nextCallTime);
    if (plannedTimes.size() == callsWanted) {
        Helpers::stop();
    }
}

void noteTime()
{
    firstCall = Timer::getCurrentTime();
}

using MainLoop = FreshWorld;

}  // namespace

TEST_F(MainLoop, AStopTakesEffectAfterTheWholePass)
{
    for (int run = 0; run < 2; ++run) {  // a stop before the run does not count
        order.clear();
        mainLoopFunctionsList.clear();
        Helpers::registerMainLoopFunction(follower, 1000.0F);
        Helpers::registerMainLoopFunction(stopper, 1000.0F);
        Helpers::registerMainLoopFunction(follower, 1000.0F);
        const std::int64_t start = Timer::getCurrentTime();
        Helpers::run();
        EXPECT_EQ(order, "fsf");
        EXPECT_GE(Timer::getCurrentTime(), start + 1);  // the pass includes its sleep
        EXPECT_TRUE(done);
    }
}

TEST_F(MainLoop, ThePeriodIsTruncatedToMilliseconds)
{
    const struct
    {
        float rate;
        std::int64_t period;
    } cases[] = {{60.0F, 16}, {3.0F, 333}, {7.0F, 142}, {1000.0F, 1}, {2000.0F, 0}, {0.5F, 2000}};
    for (const auto& c : cases) {
        mainLoopFunctionsList.clear();
        Helpers::registerMainLoopFunction(noteTime, c.rate);
        Helpers::registerMainLoopFunction(stopper, 1000.0F);
        EXPECT_EQ(mainLoopFunctionsList[0].rate, c.rate);
        EXPECT_EQ(mainLoopFunctionsList[0].nextCallTime, 0);
        const std::int64_t start = Timer::getCurrentTime();
        Helpers::run();
        EXPECT_GE(mainLoopFunctionsList[0].nextCallTime, start + c.period) << c.rate;
        EXPECT_LE(mainLoopFunctionsList[0].nextCallTime, firstCall + c.period) << c.rate;
    }
}

TEST_F(MainLoop, AFunctionRunsAMillisecondAfterItsTimeAtTheEarliest)
{
    const struct
    {
        float rate;
        std::int64_t shortest;  // milliseconds between two calls
    } cases[] = {{60.0F, 17}, {2000.0F, 1}};
    for (const auto& c : cases) {
        mainLoopFunctionsList.clear();
        plannedTimes.clear();
        callsWanted = 8;
        order.clear();
        Helpers::registerMainLoopFunction(ticker, c.rate);
        Helpers::registerMainLoopFunction(follower, 0.1F);
        Helpers::run();
        for (std::size_t i = 2; i < plannedTimes.size(); ++i) {
            EXPECT_GE(plannedTimes[i] - plannedTimes[i - 1], c.shortest);
        }
        EXPECT_EQ(plannedTimes.size(), callsWanted);
        EXPECT_EQ(order, "f");  // due once in ten seconds
    }
}
