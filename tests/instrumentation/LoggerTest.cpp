#include "instrumentation/Logger.h"

#include "instrumentation/ResourceMonitor.h"
#include "scene/SceneGraph.h"
#include "tests/network/FixedClock.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <numeric>

namespace {

int usageResult = 0;
constexpr std::int64_t start = 1700000000000;

}  // namespace

// Takes the place of the C library's in the whole test program.
extern "C" int getrusage(__rusage_who_t, rusage* usage) noexcept
{
    usage->ru_idrss = usageResult == 0 ? 700 : 5000;
    usage->ru_isrss = 41;
    return usageResult;
}

TEST(MeasurementLog, RatesNeedMoreThanASecond)
{
    FixedClock clock{start};
    Logger logger;
    logger.countPacket(Logger::TCP_RECEIVED, 3000);
    logger.countPacket(Logger::TCP_RECEIVED, 3);
    const float table[][4] = {// after milliseconds, the rates of packets, bytes and messages
                              {1000, 0, 0, 0},
                              {1001, 2000.0F / 1001.0F, 3000, 2000.0F / 1001.0F},
                              {3001, 0, 0, 0.5F}};
    for (const auto& [after, packets, bytes, messages] : table) {
        clock.set(start + static_cast<int>(after));
        logger.countMessage(Logger::UDP_RECEIVED);
        logger.calcPrS();
        EXPECT_FLOAT_EQ(logger.packetRate[Logger::TCP_RECEIVED], packets) << after;
        EXPECT_FLOAT_EQ(logger.byteRate[Logger::TCP_RECEIVED], bytes) << after;
        EXPECT_FLOAT_EQ(logger.messageRate[Logger::UDP_RECEIVED], messages) << after;
    }
}

TEST(MeasurementLog, RowsFollowOneHeaderPerRun)
{
    const FixedClock clock{start};
    SceneGraph& scene = *SceneGraph::getInstance();
    Logger logger;
    logger.setFileToWriteTo("/no-such-folder/log.csv");
    logger.writeMeasurementToFile();
    const std::string path = testing::TempDir() + "vantor-log-" + std::to_string(getpid()) + ".csv";
    logger.setFileToWriteTo(path);
    std::ofstream(path) << "an older run\n";
    logger.writeMeasurementToFile();

    scene.addTransformToType(&scene, SGT_PLAYER);
    scene.addTransformToType(&scene, SGT_PLAYER);
    scene.addTransformToType(&scene, SGT_PROJECTILE);
    std::iota(logger.packetRate, logger.packetRate + Logger::channels, 25.5F);
    std::iota(logger.byteRate, logger.byteRate + Logger::channels, 123456.0F);
    std::iota(logger.messageRate, logger.messageRate + Logger::channels, -7.5F);
    logger.byteRate[2] = 4e12F;
    logger.byteRate[3] = std::nanf("");
    ResourceMonitor::getInstance()->cpuUsage = -10;
    logger.writeMeasurementToFile();
    usageResult = -1;
    EXPECT_EQ(ResourceMonitor::getInstance()->GetMemoryUsage(), static_cast<unsigned long>(-74));

    std::ifstream written(path), expected(VANTOR_TESTS "instrumentation/golden/log.csv");
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(written), {}),
              std::string(std::istreambuf_iterator<char>(expected), {}));
    std::filesystem::remove(path);
}
