#include "instrumentation/Logger.h"

#include "instrumentation/ResourceMonitor.h"
#include "math/SaturatingTruncation.h"
#include "network/Timer.h"
#include "scene/SceneGraph.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <utility>

Logger* Logger::instance = nullptr;

namespace {

constexpr const char* columnTitles[] = {
    "time           ", "tcp_sent pkg   ", "tcp_rcvd pkg   ", "udp_sent pkg   ", "udp_rcvd pkg   ",
    "tcp_sent bw    ", "tcp_rcvd bw    ", "udp_sent bw    ", "udp_rcvd bw    ", "tcp_sent msg   ",
    "tcp_rcvd msg   ", "udp_sent msg   ", "udp_rcvd msg   ", "players        ", "projectiles    ",
    "CPU            ", "MEMORY         "};

struct CloseFile
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};

void updateRates(float* rates, const std::uint64_t* totals, std::uint64_t* lastTotals, float perSecond)
{
    for (std::size_t channel = 0; channel < Logger::channels; ++channel) {
        rates[channel] = static_cast<float>(totals[channel] - lastTotals[channel]) * perSecond;
    }
    std::copy_n(totals, Logger::channels, lastTotals);
}

void writeHeader(std::FILE* file, const std::map<std::string, std::uint64_t>& extraColumns)
{
    std::fprintf(file, "!New measurement started:\n");
    for (const char* title : columnTitles) {
        std::fprintf(file, "%s,", title);
    }
    for (const auto& [title, value] : extraColumns) {
        std::fprintf(file, "%-15s,", title.c_str());
    }
    std::fprintf(file, "\n");
}

void writeRates(std::FILE* file, const float* rates)
{
    for (std::size_t channel = 0; channel < Logger::channels; ++channel) {
        std::fprintf(file, "%15d,", saturatingTruncation(static_cast<double>(rates[channel])));
    }
}

int numberOf(SceneGraphType type)
{
    const auto* objects = SceneGraph::getInstance()->getListOfType(type);
    return objects == nullptr ? 0 : static_cast<int>(objects->size());
}

}  // namespace

Logger* Logger::getInstance()
{
    if (instance == nullptr) {
        instance = new Logger;
    }
    return instance;
}

Logger::Logger() : lastRateTime(static_cast<std::uint64_t>(Timer::getCurrentTime())) {}

void Logger::setFileToWriteTo(std::string name)
{
    fileName = std::move(name);
}

void Logger::calcPrS()
{
    const auto now = static_cast<std::uint64_t>(Timer::getCurrentTime());
    const std::uint64_t elapsed = now - lastRateTime;
    if (elapsed < 1001) {
        return;
    }
    const float perSecond = 1000.0F / static_cast<float>(elapsed);
    updateRates(packetRate, packets, lastPackets, perSecond);
    updateRates(messageRate, messages, lastMessages, perSecond);
    updateRates(byteRate, bytes, lastBytes, perSecond);
    lastRateTime = now;
}

void Logger::writeMeasurementToFile()
{
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(fileName.c_str(), "a+"));
    if (!file) {
        return;
    }
    if (rowsWritten == 0) {
        writeHeader(file.get(), extraColumns);
    }
    std::fprintf(file.get(), "%15llu,", static_cast<unsigned long long>(Timer::getCurrentTime()));
    writeRates(file.get(), packetRate);
    writeRates(file.get(), byteRate);
    writeRates(file.get(), messageRate);
    std::fprintf(file.get(), "%15d,%15d,", numberOf(SGT_PLAYER), numberOf(SGT_PROJECTILE));
    ResourceMonitor* monitor = ResourceMonitor::getInstance();
    std::fprintf(file.get(), "%15d,%15lu,", static_cast<int>(monitor->GetCPUusage()),
                 monitor->GetMemoryUsage());
    for (const auto& [title, value] : extraColumns) {
        std::fprintf(file.get(), "%15llu,", static_cast<unsigned long long>(value));
    }
    std::fprintf(file.get(), "\n");
    ++rowsWritten;
}
