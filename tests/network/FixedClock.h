#pragma once

#include <sys/time.h>

#include <cstdint>
#include <ctime>

/// While one exists, this program's time of day stands still: gettimeofday, and so Timer and its users.
///
/// Include it in one file of a program. Asio's timers must not run meanwhile.
struct FixedClock
{
    explicit FixedClock(std::int64_t milliseconds) { set(milliseconds); }
    ~FixedClock() { now = -1; }
    /// Milliseconds since the Unix epoch, and microseconds on top of them.
    void set(std::int64_t milliseconds, std::int64_t micro = 0) { now = milliseconds * 1000 + micro; }

    static inline std::int64_t now = -1;  ///< microseconds since the Unix epoch; -1: the clock runs
};

// Replaces the C library's function in the whole test program.
extern "C" int gettimeofday(timeval* time, void*) noexcept
{
    timespec real = {};
    clock_gettime(CLOCK_REALTIME, &real);
    const std::int64_t running = real.tv_sec * 1000000 + real.tv_nsec / 1000;
    const std::int64_t shown = FixedClock::now >= 0 ? FixedClock::now : running;
    *time = {shown / 1000000, shown % 1000000};
    return 0;
}
