#include "GUIClient/Helpers.h"
#include "network/Timer.h"
#include "tests/engine/FreshWorld.h"

#include <cstdint>
#include <vector>

namespace {

using MainLoop = FreshWorld;

// Functions of the loop carry no data: they work on these.
std::string order;
std::vector<std::int64_t> planned, called;

void stopper()
{
    order += 's';
    Helpers::stop();
}

void follower()
{
    order += 'f';
}

// Notes when the loop planned this call and when it came.
void ticker()
{
    planned.push_back(mainLoopFunctionsList[0].nextCallTime);
    called.push_back(Timer::getCurrentTime());
    if (called.size() == 6) {
        Helpers::stop();
    }
}

}  // namespace

TEST_F(MainLoop, AStopTakesEffectAfterTheWholePass)
{
    Helpers::registerMainLoopFunction(follower, 1000.0F);
    Helpers::registerMainLoopFunction(stopper, 1000.0F);
    Helpers::registerMainLoopFunction(follower, 1000.0F);
    const std::int64_t start = Timer::getCurrentTime();
    order.clear();
    Helpers::run();
    EXPECT_EQ(order, "fsf");
    EXPECT_GE(Timer::getCurrentTime(), start + 1);  // the pass includes its sleep
}

TEST_F(MainLoop, CallsAreAPeriodOfWholeMillisecondsApartAndAMillisecondLateAtTheEarliest)
{
    order.clear();
    Helpers::registerMainLoopFunction(ticker, 60.0F);
    Helpers::registerMainLoopFunction(follower, 0.1F);
    Helpers::stop();  // before the run it does not count
    Helpers::run();
    EXPECT_EQ(called.size(), 6U);
    for (std::size_t i = 1; i < called.size(); ++i) {
        EXPECT_GT(called[i], planned[i]);
        EXPECT_GT(planned[i], planned[i - 1] + 16);
        EXPECT_LE(planned[i], called[i - 1] + 16);
    }
    EXPECT_EQ(order, "f");  // due once in ten seconds
}
