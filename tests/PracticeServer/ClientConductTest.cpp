#include "PracticeServer/ClientConduct.h"

#include <gtest/gtest.h>

using namespace practice;

namespace {

constexpr std::uint64_t second = 60;  // steps

struct Habit
{
    int datagrams;                  ///< that steer, at once
    std::uint64_t every;            ///< steps, from the first on
    std::uint64_t streamBytes = 0;  ///< a step
    std::uint64_t garbageEvery = 1000 * second;
};

/// What a client of that habit is dropped for within two minutes, and in which second.
std::string firstFault(const Habit& habit)
{
    ClientConduct conduct(ConductLimits(), 0);
    for (std::uint64_t step = 1; step <= 120 * second; ++step) {
        for (int i = 0; i < habit.datagrams && step % habit.every == 1; ++i) {
            conduct.datagram(step);
            conduct.steeredByDatagram(step);
        }
        conduct.streamBytes(habit.streamBytes, step);
        if (step % habit.garbageEvery == 0) {
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
    const std::pair<Habit, std::string> cases[] = {
        {{10, 3}, ""},
        {{11, 3}, "19: sent more than 200 datagrams a second"},
        {{400, 20 * second}, ""},
        {{401, 20 * second}, "0: sent more than 200 datagrams a second"},
        {{0, 3}, "20: sent no steering over UDP within 20 s"},
        {{1, 1000 * second}, "30: sent no datagram for 30 s"},
        {{1, 3, 8192 / 60}, ""},
        {{1, 3, 65536}, "0: sent more than 8192 bytes a second on TCP"},
        {{1, 3, 0, second}, ""},
        {{1, 3, 0, second / 2}, "20: sent more than 20 messages without sense"},
    };
    for (const auto& [habit, fault] : cases) {
        EXPECT_EQ(firstFault(habit), fault);
    }
}
