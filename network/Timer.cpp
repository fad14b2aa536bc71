#include "network/Timer.h"

#include <sys/time.h>

unsigned int Timer::clock = 0;
unsigned int Timer::syncTime = 0;
bool Timer::isSynced = false;

namespace {

double currentSeconds()
{
    return static_cast<double>(Timer::getCurrentTime()) / 1000.0;
}

unsigned int currentLow32Bits()
{
    return static_cast<unsigned int>(Timer::getCurrentTime());
}

}  // namespace

Timer::Timer() : last(currentSeconds()) {}

double Timer::getTimeDiff()
{
    const double now = currentSeconds();
    const double difference = now - last;
    last = now;
    return difference;
}

std::int64_t Timer::getCurrentTime()
{
    timeval now = {};
    gettimeofday(&now, nullptr);
    return (static_cast<std::int64_t>(now.tv_sec) * 1000000 + now.tv_usec) / 1000;
}

unsigned int Timer::getCurSyncedTime()
{
    return clock - syncTime + currentLow32Bits();
}

void Timer::sync_clock(unsigned int serverTime)
{
    syncTime = currentLow32Bits();
    clock = serverTime;
}
