#include "GUIClient/Helpers.h"
#include "GUIClient/drawGL.h"
#include "scene/Projectile.h"
#include "tests/engine/FreshWorld.h"
#include "tests/network/FixedClock.h"

#include <vector>

namespace {

using MainLoop = FreshWorld;

constexpr std::int64_t hour = 3600000;

// The loop's functions have no arguments: these are theirs.
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

// Records when the loop planned this call and when it came. Its third call sets the clock back.
void ticker()
{
    planned.push_back(mainLoopFunctionsList[0].nextCallTime);
    called.push_back(Timer::getCurrentTime());
    if (called.size() == 3) {
        FixedClock::offset = -1000 * hour;
    } else if (called.size() == 6) {
        Helpers::stop();
    }
}

}  // namespace

TEST_F(MainLoop, AStopTakesEffectAfterTheWholePass)
{
    Helpers::registerMainLoopFunction(follower, 1000.0F);
    Helpers::registerMainLoopFunction(stopper, 1000.0F);
    Helpers::registerMainLoopFunction(follower, 1000.0F);
    order.clear();
    const std::int64_t start = Timer::getCurrentTime();
    Helpers::run();
    EXPECT_EQ(order, "fsf");
    EXPECT_GE(Timer::getCurrentTime(), start + 1) << "the pass includes its sleep";
}

// If a clock set back delayed the calls, the test would time out.
TEST_F(MainLoop, CallsComeAPeriodApartAlsoWhenTheClockIsSetBack)
{
    order.clear();
    Helpers::registerMainLoopFunction(ticker, 60.0F);
    Helpers::registerMainLoopFunction(follower, 0.1F);
    Helpers::stop();  // has no effect on a later run
    Helpers::run();
    ASSERT_EQ(called.size(), 6U);
    for (std::size_t i = 1; i < called.size(); ++i) {
        EXPECT_GT(called[i], planned[i]);
        const std::int64_t setBack = i == 3 ? hour : 0;
        EXPECT_GT(planned[i] + setBack, planned[i - 1] + 16);
        EXPECT_LE(planned[i] + setBack, called[i - 1] + 16 + (i == 3 ? 5000 : 0))
            << "the slack is the call's time";
    }
    EXPECT_EQ(order, "f") << "due once in ten seconds";
}

TEST_F(MainLoop, AFrameNeverTakesNegativeTime)
{
    auto* shot = new Projectile(1ULL);
    graph->attach(shot);
    const float lifetime = shot->lifetime;
    FixedClock::offset -= 1000 * hour;
    drawGL();
    EXPECT_EQ(shot->lifetime, lifetime);
}
