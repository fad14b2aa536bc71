#pragma once

#include <sys/time.h>

#include <cstdint>
#include <ctime>

/// While one exists, this program's time of day stands still: gettimeofday, and so Timer and all that reads
/// it. To be included once in a program; nothing of Asio's timers may run meanwhile.
class FixedClock
{
public:
    explicit FixedClock(std::int64_t milliseconds) { set(milliseconds); }
    FixedClock(const FixedClock&) = delete;
    FixedClock& operator=(const FixedClock&) = delete;
    ~FixedClock() { now = -1; }

    /// Milliseconds since the Unix epoch, and microseconds on top of them.
    void set(std::int64_t milliseconds, std::int64_t micro = 0) { now = milliseconds * 1000 + micro; }

    static inline std::int64_t now = -1;  ///< microseconds since the Unix epoch; -1: the real clock
};

// Takes the place of the C library's in the whole test program.
extern "C" int gettimeofday(timeval* time, void*) noexcept
{
    timespec real = {};
    const int result = clock_gettime(CLOCK_REALTIME, &real);
    *time = {real.tv_sec, real.tv_nsec / 1000};
    if (FixedClock::now >= 0) {
        *time = {FixedClock::now / 1000000, FixedClock::now % 1000000};
    }
    return result;
}
