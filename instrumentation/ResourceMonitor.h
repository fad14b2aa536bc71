#pragma once

#include <cstdint>

/// Processor and memory figures of this process for the measurement log. A singleton, created on first use
/// and never destroyed; one thread at a time may call it.
class ResourceMonitor
{
public:
    static ResourceMonitor* instance;
    static ResourceMonitor* getInstance();

    /// cpuUsage, which nothing sets: always 0 in the client.
    short GetCPUusage() const { return cpuUsage; }
    /// The integral data and stack sizes of getrusage, which Linux leaves at 0, divided by a non-zero
    /// cpuUsage. If getrusage fails, the figure of the last call.
    unsigned long GetMemoryUsage();

    std::int16_t cpuUsage = 0;
    std::uint64_t lastMemoryUsage = 0;
};
