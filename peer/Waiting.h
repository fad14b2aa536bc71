#pragma once

#include <chrono>
#include <thread>

namespace peer {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

/// Asks every few milliseconds until the condition holds. False if it does not hold when the time is over.
template <class Condition>
bool eventually(Condition condition, Clock::duration timeout = 10s)
{
    const Clock::time_point deadline = Clock::now() + timeout;
    while (!condition()) {
        if (Clock::now() > deadline) {
            return condition();
        }
        std::this_thread::sleep_for(5ms);
    }
    return true;
}

}  // namespace peer
