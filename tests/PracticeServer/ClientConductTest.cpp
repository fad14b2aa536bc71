#include "PracticeServer/ClientConduct.h"

#include <gtest/gtest.h>

#include <functional>

using namespace practice;

namespace {

constexpr std::uint64_t second = 60;  // steps

using Deed = std::function<void(ClientConduct&, std::uint64_t step)>;

Deed steerEvery(std::uint64_t steps, int copies)
{
    return [steps, copies](ClientConduct& conduct, std::uint64_t step) {
        for (int i = 0; i < copies && step % steps == 0; ++i) {
            conduct.datagram(step);
            conduct.steeredByDatagram(step);
        }
    };
}

/// What a client that does the deed at every step of two minutes is dropped for, and in which second.
std::string firstFault(const Deed& deed)
{
    ClientConduct conduct(ConductLimits(), 0);
    for (std::uint64_t step = 1; step <= 120 * second; ++step) {
        deed(conduct, step);
        if (!conduct.fault(step).empty()) {
            return std::to_string(step / second) + ": " + conduct.fault(step);
        }
    }
    return "";
}

}  // namespace

TEST(Conduct, TellsWhatAGameMayDoFromWhatItMayNot)
{
    const auto bytesPerStep = [](std::uint64_t bytes) {
        return [bytes](ClientConduct& c, std::uint64_t step) {
            steerEvery(3, 1)(c, step);
            c.streamBytes(bytes, step);
        };
    };
    const auto garbageEvery = [](std::uint64_t steps) {
        return [steps](ClientConduct& c, std::uint64_t step) {
            steerEvery(3, 1)(c, step);
            step % steps == 0 ? c.garbage(step) : void();
        };
    };
    const std::pair<Deed, std::string> cases[] = {
        {steerEvery(3, 1), ""},
        {steerEvery(3, 10), ""},
        {steerEvery(20 * second, 400), ""},
        {steerEvery(3, 11), "19: sent more than 200 datagrams a second"},
        {steerEvery(20 * second, 401), "20: sent more than 200 datagrams a second"},
        {[](ClientConduct&, std::uint64_t) {}, "20: sent no steering over UDP within 20 s"},
        {[](ClientConduct& c, std::uint64_t step) { step == 1 ? c.steeredByDatagram(step) : void(); },
         "30: sent no datagram for 30 s"},
        {bytesPerStep(8192 / 60), ""},
        {bytesPerStep(65536), "0: sent more than 8192 bytes a second on TCP"},
        {garbageEvery(second), ""},
        {garbageEvery(second / 2), "20: sent more than 20 messages without sense"},
    };
    for (const auto& [deed, fault] : cases) {
        EXPECT_EQ(firstFault(deed), fault);
    }
}
