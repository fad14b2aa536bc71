#include "instrumentation/ResourceMonitor.h"

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <cstdint>
#include <utility>

namespace {

rusage answer = {};
int result = 0;

}  // namespace

// Takes the place of the C library's in the whole test program.
extern "C" int getrusage(__rusage_who_t, rusage* usage) noexcept
{
    *usage = answer;
    return result;
}

TEST(ResourceMonitorFigures, AddDataAndStackAndDivideOnlyByAKnownProcessorUse)
{
    EXPECT_EQ(ResourceMonitor().GetCPUusage(), 0);
    const std::pair<std::int16_t, unsigned long> table[] = {
        {0, 741}, {10, 74}, {-10, static_cast<unsigned long>(-74)}};
    for (const auto& [cpu, expected] : table) {
        ResourceMonitor monitor;
        monitor.cpuUsage = cpu;
        answer.ru_idrss = 700;
        answer.ru_isrss = 41;
        result = 0;
        EXPECT_EQ(monitor.GetMemoryUsage(), expected);
        answer.ru_idrss = 5000;
        result = -1;
        EXPECT_EQ(monitor.GetMemoryUsage(), expected) << "the last figure where the system has none";
    }
}
