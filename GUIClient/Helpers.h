#pragma once

#include <cstdint>
#include <vector>

/// A function that the main loop calls.
struct mainLoopFunctionStruct
{
    void (*function)();
    float rate;                 ///< calls per second
    std::int64_t nextCallTime;  ///< milliseconds on Timer's clock
};

extern std::vector<mainLoopFunctionStruct> mainLoopFunctionsList;  ///< in the order of registration
extern bool done;                                                  ///< whether the main loop is to end

/// The main loop: calls each registered function at its rate and sleeps in between. Main thread only.
class Helpers
{
public:
    /// Before run(). `rate` in calls per second, more than 0; the first call comes at once.
    static void registerMainLoopFunction(void (*function)(), float rate);
    /// Returns after stop(), at the end of a pass over all functions. With none registered it never ends.
    /// A clock set back does not delay the calls; a clock set forward brings them forward.
    static void run();
    static void stop();
};
