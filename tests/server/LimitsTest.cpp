#include "server/net/Limits.h"
#include "server/net/StepClock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

using namespace practice;
using namespace std::chrono_literals;

namespace {

constexpr std::uint64_t second = 60;  // steps

/// What a client does for two minutes: datagrams with steering every so many steps, bytes on TCP in each
/// step, and garbage now and then.
struct Conduct
{
    int datagrams = 0;
    std::uint64_t every = 3;
    std::uint64_t streamBytes = 0;
    std::uint64_t garbageEvery = 1000 * second;
};

/// The second in which it is dropped, and why.
std::string firstReason(const Conduct& conduct)
{
    ClientLimits limits(ClientLimits::Config(), 0);
    for (std::uint64_t step = 1; step <= 120 * second; ++step) {
        for (int i = 0; i < conduct.datagrams && step % conduct.every == 1; ++i) {
            limits.receivedDatagram(step);
            limits.receivedSteering(step);
        }
        limits.receivedStream(conduct.streamBytes, step);
        if (step % conduct.garbageEvery == 0) {
            limits.receivedGarbage(step);
        }
        if (const std::string reason = limits.reasonToDrop(step); !reason.empty()) {
            return std::to_string(step / second) + ": " + reason;
        }
    }
    return "";
}

}  // namespace

TEST(ClientLimits, TellAGameFromAnAttack)
{
    const std::pair<Conduct, std::string> cases[] = {
        {{10, 3}, ""},
        {{11, 3}, "19: sent more than 200 datagrams a second"},
        {{401, 20 * second}, "20: sent more than 200 datagrams a second"},
        {{400, 20 * second}, ""},
        {{402, 20 * second}, "0: sent more than 200 datagrams a second"},  // the first one does not count
        {{0, 3}, "20: sent no steering over UDP within 20 s"},
        {{1, 1000 * second}, "30: sent no datagram for 30 s"},
        {{1, 3, 8192 / 60}, ""},
        {{1, 3, 65536}, "0: sent more than 8192 bytes a second on TCP"},
        {{1, 3, 0, second}, ""},
        {{1, 3, 0, second / 2}, "20: sent more than 20 messages without sense"},
        {{0, 3, 0, 10}, "20: sent no steering over UDP within 20 s"},
    };
    for (const auto& [conduct, reason] : cases) {
        EXPECT_EQ(firstReason(conduct), reason);
    }
}

TEST(RateLimitedLog, PassesSomeLinesAndCountsTheOthers)
{
    std::vector<std::string> lines;
    RateLimitedLog log([&](const std::string& line) { lines.push_back(line); });
    for (std::uint64_t step = 0; step <= 60; ++step) {
        log.log("join", step);
        log.log("join", step);
        log.afterStep(step);
    }
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "join"), 90) << "a burst and ten a second";
    EXPECT_EQ(lines.size(), 91U);
    EXPECT_EQ(lines.back(), "... and 32 more lines like these");
}

TEST(StepClock, CatchesUpOrGivesUp)
{
    StepClock clock(10ms);
    const StepClock::TimePoint start;
    clock.start(start);
    const auto stepsAt = [&](std::chrono::milliseconds time) {
        int steps = 0;
        while (clock.takeStep(start + time)) {
            ++steps;
        }
        return steps;
    };
    EXPECT_EQ(stepsAt(9ms), 0);
    EXPECT_EQ(stepsAt(10ms), 1);
    EXPECT_EQ(stepsAt(55ms), 4);
    EXPECT_EQ(clock.report(), "played 5 steps, latest 35.0 ms behind");
    EXPECT_EQ(stepsAt(1060ms), 1) << "a second of haste";
    EXPECT_EQ(clock.report(), "played 6 steps, latest 1000.0 ms behind, 1000.0 ms given up");
}
