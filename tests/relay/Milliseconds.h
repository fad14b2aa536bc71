#pragma once

#include "tools/relay/Impairment.h"

constexpr relay::Duration milliseconds(int count)
{
    return relay::Duration(1000 * count);
}

inline double inMilliseconds(relay::Clock::duration time)
{
    return std::chrono::duration<double, std::milli>(time).count();
}
