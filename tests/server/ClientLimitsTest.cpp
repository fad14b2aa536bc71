#include "server/net/ClientLimits.h"

#include <gtest/gtest.h>

using namespace practice;

namespace {

constexpr std::uint64_t second = 60;  // steps

/// What a client is dropped for within two minutes, and in which second: one that steers by some datagrams at
/// once every so many steps, from the first on, and sends some bytes on TCP a step, and garbage now and then.
std::string firstFault(int datagrams, std::uint64_t every, std::uint64_t streamBytes = 0,
                       std::uint64_t garbageEvery = 1000 * second)
{
    ClientLimits conduct(LimitConfig(), 0);
    for (std::uint64_t step = 1; step <= 120 * second; ++step) {
        for (int i = 0; i < datagrams && step % every == 1; ++i) {
            conduct.datagram(step);
            conduct.steeredByDatagram(step);
        }
        conduct.streamBytes(streamBytes, step);
        if (step % garbageEvery == 0) {
            conduct.garbage(step);
        }
        if (!conduct.fault(step).empty()) {
            return std::to_string(step / second) + ": " + conduct.fault(step);
        }
    }
    return "";
}

}  // namespace

TEST(Conduct, TellsWhatAGameMayDoFromWhatItMayNot)
{
    EXPECT_EQ(firstFault(10, 3), "");
    EXPECT_EQ(firstFault(11, 3), "19: sent more than 200 datagrams a second");
    EXPECT_EQ(firstFault(400, 20 * second), "");
    EXPECT_EQ(firstFault(401, 20 * second), "0: sent more than 200 datagrams a second");
    EXPECT_EQ(firstFault(0, 3), "20: sent no steering over UDP within 20 s");
    EXPECT_EQ(firstFault(1, 1000 * second), "30: sent no datagram for 30 s");
    EXPECT_EQ(firstFault(1, 3, 8192 / 60), "");
    EXPECT_EQ(firstFault(1, 3, 65536), "0: sent more than 8192 bytes a second on TCP");
    EXPECT_EQ(firstFault(1, 3, 0, second), "");
    EXPECT_EQ(firstFault(1, 3, 0, second / 2), "20: sent more than 20 messages without sense");
}
