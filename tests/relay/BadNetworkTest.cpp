#include "relay/BadNetwork.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <utility>
#include <vector>

using namespace relay;
using namespace std::chrono_literals;

namespace {

constexpr int sent = 20'000;
constexpr Flow firstFlow = {Transport::datagrams, 1, Direction::toClient};
constexpr Time start{std::chrono::hours(1)};

/// Of 40 datagrams, how often each arrives, and by how many it is overtaken.
std::string decisions(std::uint32_t seed, const Flow& flow)
{
    Impairment impairment({80, 30, 40, 10, 40}, seed, flow);
    std::string copies, overtakenBy;
    for (int i = 0; i < 40; ++i) {
        const Impairment::Decision decision = impairment.next();
        copies += std::to_string(decision.copies);
        overtakenBy += std::to_string(decision.overtakenBy);
    }
    return copies + ' ' + overtakenBy;
}

}  // namespace

// A datagram is sent in each interval, and taken out exactly when it is due.
TEST(Faults, ComeAtTheAskedRates)
{
    const std::pair<Conditions, std::chrono::milliseconds> cases[] = {{{80, 30, 0, 0, 0}, 1ms},
                                                                      {{5, 0, 0, 0, mostReorder}, 50ms},
                                                                      {{80, 30, 50, 5, 40}, 16ms},
                                                                      {{0, 0, 100, 0, 0}, 1ms},
                                                                      {{0, 0, 0, 100, 0}, 1ms}};
    for (const auto& [asked, interval] : cases) {
        DelayQueue queue(Impairment(asked, 1, firstFlow));
        std::map<int, int> arrived;
        int newest = -1, late = 0, twice = 0;
        for (int sending = 0; sending <= sent; ++sending) {
            const Time now = sending == sent ? Time::max() : start + sending * interval;
            for (Time due = queue.nextDue(); due < now; due = queue.nextDue()) {
                const int number = std::stoi(queue.pop(due).value());
                const int copy = ++arrived[number];
                twice += copy == 2 ? 1 : 0;
                late += copy == 1 && number < newest ? 1 : 0;
                newest = std::max(newest, number);
            }
            EXPECT_TRUE(sending == sent || queue.push(now, std::to_string(sending)));
        }
        const auto expectPercent = [](double percent, int part, std::size_t whole) {
            const double tolerance = percent == 0 || percent == 100 ? 0 : 1;
            EXPECT_NEAR(part, percent / 100 * double(whole), tolerance / 100 * double(whole));
        };
        expectPercent(asked.loss, sent - int(arrived.size()), sent);
        expectPercent(asked.duplicate, twice, arrived.size());
        expectPercent(asked.reorder, late, arrived.size());
    }
}

TEST(Faults, DelaysAreUniformWithinTheJitter)
{
    Impairment impairment({10, 30, 0, 0, 0}, 1, firstFlow);
    std::vector<Duration> delays(10'001);
    std::generate(delays.begin(), delays.end(), [&] { return impairment.next().delay; });
    std::sort(delays.begin(), delays.end());
    for (const auto& [index, milliseconds] : {std::pair(2'500, 0), {5'000, 10}, {7'500, 25}, {10'000, 40}}) {
        EXPECT_NEAR(double(delays[std::size_t(index)].count()) / 1000, milliseconds, 1);
    }
}

TEST(Faults, FollowFromSeedAndFlow)
{
    const std::string first =
        "2111112110110001101021010111001001011100 0303030003003220200100010000203000120200";
    EXPECT_EQ(decisions(1, firstFlow), first) << "a seed means the same on every machine";
    const std::set<std::string> others = {first, decisions(2, firstFlow),
                                          decisions(1, {Transport::datagrams, 2, Direction::toClient}),
                                          decisions(1, {Transport::datagrams, 1, Direction::toServer})};
    EXPECT_EQ(others.size(), 4U);
    EXPECT_EQ(decisions(1, {Transport::stream, 1, Direction::toClient}),
              std::string(40, '1') + ' ' + std::string(40, '0'));
}

TEST(DelayQueue, ReleasesALonelyDatagramAtTheHoldLimit)
{
    DelayQueue queue(Impairment({10, 0, 0, 0, mostReorder}, 1, firstFlow));
    EXPECT_TRUE(queue.push(start, "lonely"));
    const Time due = start + 10ms + DelayQueue::holdLimit;
    EXPECT_EQ(queue.nextDue(), due);
    EXPECT_EQ(queue.pop(due - Duration(1)), std::nullopt);
    EXPECT_TRUE(queue.push(due, "too late to overtake"));
    EXPECT_EQ(queue.pop(start + 1h), "lonely");
    EXPECT_EQ(queue.pop(start + 1h), "too late to overtake");
    EXPECT_EQ(queue.nextDue(), Time::max());
}

TEST(DelayQueue, LosesWhatComesWhileItIsFull)
{
    DelayQueue queue(Impairment({10}, 1, firstFlow));
    const std::string large(DelayQueue::byteLimit / 2, 'x');
    EXPECT_TRUE(queue.push(start, large));
    EXPECT_FALSE(queue.push(start, large));
    std::size_t empty = 0;
    while (empty < DelayQueue::byteLimit && queue.push(start, "")) {
        ++empty;
    }
    EXPECT_LT(empty, DelayQueue::byteLimit / 48) << "a datagram without bytes takes memory, too";
    EXPECT_EQ(queue.pop(start + 10ms), large);
    EXPECT_TRUE(queue.push(start + 10ms, large.substr(1000)));
}
