#include "GUIClient/Helpers.h"

#include "network/Timer.h"

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <boost/thread/thread.hpp>

#include <algorithm>
#include <limits>

std::vector<mainLoopFunctionStruct> mainLoopFunctionsList;
bool done = false;

namespace {

// Milliseconds. If the clock was set back since the last reading, planned times move back with it. Otherwise
// the loop would wait until the clock has caught up.
std::int64_t readClock(std::int64_t& lastReading)
{
    const std::int64_t now = Timer::getCurrentTime();
    for (mainLoopFunctionStruct& entry : mainLoopFunctionsList) {
        entry.nextCallTime -= std::max<std::int64_t>(0, lastReading - now);
    }
    lastReading = now;
    return now;
}

// Truncated: 60 calls per second are one every 16 ms.
std::int64_t periodOf(float rate)
{
    return static_cast<std::int64_t>(1.0F / rate * 1000.0F);
}

// Strictly later than the planned time: a function runs a millisecond after it at the earliest.
void callIfDue(mainLoopFunctionStruct& entry, std::int64_t now)
{
    if (now > entry.nextCallTime) {
        entry.function();
        entry.nextCallTime = now + periodOf(entry.rate);
    }
}

void sleepUntilNextCall(std::int64_t now)
{
    std::int64_t wait = std::numeric_limits<std::int64_t>::max();
    for (const mainLoopFunctionStruct& entry : mainLoopFunctionsList) {
        wait = std::min(wait, entry.nextCallTime - now);
    }
    if (wait > 0 && !mainLoopFunctionsList.empty()) {
        boost::this_thread::sleep(boost::posix_time::milliseconds(wait));
    }
}

}  // namespace

void Helpers::registerMainLoopFunction(void (*function)(), float rate)
{
    mainLoopFunctionsList.push_back({function, rate, 0});
}

void Helpers::run()
{
    done = false;
    std::int64_t lastReading = Timer::getCurrentTime();
    do {
        for (mainLoopFunctionStruct& entry : mainLoopFunctionsList) {
            callIfDue(entry, readClock(lastReading));
        }
        sleepUntilNextCall(readClock(lastReading));
    } while (!done);
}

void Helpers::stop()
{
    done = true;
}
