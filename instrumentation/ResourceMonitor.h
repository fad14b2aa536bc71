#pragma once

#include <cstdint>

/// Two figures about this process for the measurement log. A singleton, created on first use and never
/// destroyed; called by one thread at a time.
class ResourceMonitor
{
public:
    static ResourceMonitor* instance;
    static ResourceMonitor* getInstance();

    /// 0: nothing measures the processor's use yet.
    short GetCPUusage() const { return cpuUsage; }
    /// The integral data and stack sizes of getrusage (which Linux leaves at 0), divided by cpuUsage where
    /// that is not 0; where getrusage fails, the figure of the last call.
    unsigned long GetMemoryUsage();

    std::int16_t cpuUsage = 0;
    std::uint64_t lastMemoryUsage = 0;
};
