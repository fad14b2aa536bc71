#include "GUIClient/Helpers.h"

#include "network/Timer.h"

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <boost/thread/thread.hpp>

#include <algorithm>
#include <limits>

std::vector<mainLoopFunctionStruct> mainLoopFunctionsList;
bool done = false;

namespace {

constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max();

// Truncated: 60 calls per second are one every 16 ms.
std::int64_t periodOf(float rate)
{
    return static_cast<std::int64_t>(1.0F / rate * 1000.0F);
}

// Strictly later than the planned time: a function runs a millisecond after it at the earliest.
void callIfDue(mainLoopFunctionStruct& entry)
{
    const std::int64_t now = Timer::getCurrentTime();
    if (now > entry.nextCallTime) {
        entry.function();
        entry.nextCallTime = now + periodOf(entry.rate);
    }
}

std::int64_t runOnePass()
{
    std::int64_t earliest = never;
    for (mainLoopFunctionStruct& entry : mainLoopFunctionsList) {
        callIfDue(entry);
        earliest = std::min(earliest, entry.nextCallTime);
    }
    return earliest;
}

void sleepUntil(std::int64_t time)
{
    const std::int64_t wait = time - Timer::getCurrentTime();
    if (wait > 0) {
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
    do {
        const std::int64_t earliest = runOnePass();
        if (earliest != never) {
            sleepUntil(earliest);
        }
    } while (!done);
}

void Helpers::stop()
{
    done = true;
}
