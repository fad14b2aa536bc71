#pragma once

#include <cstdint>

/// The client's clocks: the local wall clock in milliseconds, a stopwatch in seconds, and an estimate of the
/// server's clock.
///
/// All read the system's time of day at millisecond resolution, and jump when it is set. The server's clock
/// is one offset, taken from one timestamp. The transit is not corrected, so this clock runs behind by it.
/// The static state belongs to the main thread; getCurrentTime() may be called from any.
class Timer
{
public:
    static unsigned int clock;     ///< server milliseconds at synchronisation
    static unsigned int syncTime;  ///< local milliseconds at synchronisation, low 32 bits
    static bool isSynced;          ///< the caller of sync_clock sets it, once

    /// Starts the stopwatch.
    Timer();
    /// Seconds since the previous call, or since construction; 0 within the same millisecond, negative if the
    /// clock was set back.
    double getTimeDiff();

    /// Milliseconds since the Unix epoch.
    static std::int64_t getCurrentTime();
    /// Estimated server milliseconds, wrapping at 2^32; before synchronisation the local clock's low 32 bits.
    static unsigned int getCurSyncedTime();
    /// Takes `serverTime` (milliseconds) as the server's clock at this moment.
    static void sync_clock(unsigned int serverTime);

private:
    double last;  ///< when getTimeDiff() was last called, or this was made; seconds since the Unix epoch
};
