#include "instrumentation/Logger.h"

#include "scene/Player.h"
#include "scene/Projectile.h"
#include "scene/SceneGraph.h"
#include "tests/network/FixedClock.h"

#include <gtest/gtest.h>

#include <unistd.h>
#include <cstdio>
#include <fstream>
#include <iterator>

namespace {

constexpr std::int64_t start = 1700000000000;

const std::string header =
    "!New measurement started:\n"
    "time           ,tcp_sent pkg   ,tcp_rcvd pkg   ,udp_sent pkg   ,udp_rcvd pkg   ,tcp_sent bw    ,"
    "tcp_rcvd bw    ,udp_sent bw    ,udp_rcvd bw    ,tcp_sent msg   ,tcp_rcvd msg   ,udp_sent msg   ,"
    "udp_rcvd msg   ,players        ,projectiles    ,CPU            ,MEMORY         ,\n";

std::string contents(const std::string& name)
{
    std::ifstream file(name);
    return {std::istreambuf_iterator<char>(file), {}};
}

class MeasurementLog : public testing::Test
{
protected:
    MeasurementLog() { logger.setFileToWriteTo(file); }
    ~MeasurementLog() override
    {
        std::remove(file.c_str());
        delete scene;
        SceneGraph::instance = nullptr;
    }

    SceneGraph* scene = SceneGraph::instance = new SceneGraph;
    FixedClock clock{start};
    Logger logger;
    const std::string file = testing::TempDir() + "vantor-log-" + std::to_string(getpid()) + ".csv";
};

}  // namespace

TEST_F(MeasurementLog, RatesAreRecomputedOnlyAfterMoreThanASecond)
{
    logger.countPacket(Logger::TCP_RECEIVED, 3003);
    logger.countMessage(Logger::UDP_RECEIVED);
    clock.set(start + 1000);
    logger.calcPrS();
    EXPECT_EQ(logger.packetRate[Logger::TCP_RECEIVED], 0.0F);
    EXPECT_EQ(logger.lastRateTime, static_cast<std::uint64_t>(start));

    clock.set(start + 1001);
    logger.calcPrS();
    EXPECT_FLOAT_EQ(logger.packetRate[Logger::TCP_RECEIVED], 1000.0F / 1001.0F);
    EXPECT_FLOAT_EQ(logger.byteRate[Logger::TCP_RECEIVED], 3000.0F);
    EXPECT_FLOAT_EQ(logger.messageRate[Logger::UDP_RECEIVED], 1000.0F / 1001.0F);
    EXPECT_EQ(logger.packetRate[Logger::UDP_RECEIVED], 0.0F) << "each channel has its own";

    clock.set(start + 3001);
    logger.calcPrS();
    EXPECT_EQ(logger.byteRate[Logger::TCP_RECEIVED], 0.0F) << "what is counted already is not counted again";
}

TEST_F(MeasurementLog, ARowHasItsFieldsInFixedColumns)
{
    scene->attach(new Player(1, true, 100));
    scene->attach(new Player(2, true, 100));
    scene->attach(new Projectile(3));
    for (unsigned int channel = 0; channel < Logger::channels; ++channel) {
        const auto n = static_cast<float>(channel);
        logger.packetRate[channel] = 25.0F + n;
        logger.byteRate[channel] = 123456.0F + n;
        logger.messageRate[channel] = 7.0F + n;
    }
    logger.packetRate[1] = 1.5F;
    logger.byteRate[2] = 4e12F;
    logger.messageRate[3] = -1.5F;
    logger.writeMeasurementToFile();
    EXPECT_EQ(contents(file),
              header +
                  "  1700000000000,             25,              1,             27,             28,"
                  "         123456,         123457,     2147483647,         123459,"
                  "              7,              8,              9,             -1,"
                  "              2,              1,              0,              0,\n");
}

TEST_F(MeasurementLog, TheHeaderIsWrittenOncePerRunAndOldRowsStay)
{
    std::ofstream(file) << "an older run\n";
    logger.writeMeasurementToFile();
    logger.writeMeasurementToFile();
    const std::string text = contents(file);
    const std::string row = text.substr(text.rfind('\n', text.size() - 2) + 1);
    EXPECT_EQ(text, "an older run\n" + header + row + row);
    EXPECT_EQ(row.size(), 17U * 16U + 1U);
    EXPECT_EQ(row.substr(13 * 16, 32), "              0,              0,")
        << "no list of players, no players";
    EXPECT_EQ(logger.rowsWritten, 2U);
    EXPECT_EQ(scene->getListOfType(SGT_PLAYER), nullptr) << "looking does not make a list";
}

TEST_F(MeasurementLog, AnUnwritableFileCostsNothingAndTheHeaderComesLater)
{
    logger.setFileToWriteTo(file + ".no-such-folder/log.csv");
    logger.writeMeasurementToFile();
    EXPECT_EQ(logger.rowsWritten, 0U);
    logger.setFileToWriteTo(file);
    logger.writeMeasurementToFile();
    EXPECT_EQ(contents(file).substr(0, header.size()), header);
}
