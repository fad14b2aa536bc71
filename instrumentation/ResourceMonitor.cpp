#include "instrumentation/ResourceMonitor.h"

#include <sys/resource.h>

ResourceMonitor* ResourceMonitor::instance = nullptr;

ResourceMonitor* ResourceMonitor::getInstance()
{
    if (instance == nullptr) {
        instance = new ResourceMonitor;
    }
    return instance;
}

unsigned long ResourceMonitor::GetMemoryUsage()
{
    rusage usage = {};
    if (getrusage(RUSAGE_SELF, &usage) < 0) {
        return lastMemoryUsage;
    }
    std::int64_t memory = usage.ru_idrss + usage.ru_isrss;
    if (cpuUsage != 0) {
        memory /= cpuUsage;
    }
    lastMemoryUsage = static_cast<std::uint64_t>(memory);
    return lastMemoryUsage;
}
