#include "relay/DelayQueue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <utility>

using namespace relay;
using namespace std::chrono_literals;

namespace {

constexpr int sent = 20'000;
constexpr Flow firstLane = {Transport::datagrams, 1, Direction::toClient};
constexpr Time start{std::chrono::hours(1)};
constexpr Conditions awful = {80ms, 30ms, 0.15, 0.05, 0.1};

/// Sends a datagram in each interval, takes them out at the very times that the line names, and tells which
/// arrived.
std::vector<int> cross(const Conditions& conditions, std::chrono::milliseconds interval)
{
    DelayQueue line(Impairment(conditions, 1, firstLane));
    std::vector<int> arrivals;
    const auto takeUntil = [&](Time end) {
        for (auto due = line.nextDue(); due && *due < end; due = line.nextDue()) {
            while (const auto datagram = line.pop(*due)) {
                arrivals.push_back(std::stoi(*datagram));
            }
        }
    };
    for (int number = 0; number < sent; ++number) {
        takeUntil(start + number * interval);
        EXPECT_TRUE(line.push(start + number * interval, std::to_string(number)));
    }
    takeUntil(Time::max());
    return arrivals;
}

/// Of 40 datagrams, how often each arrives.
std::string fates(std::uint32_t seed, const Flow& flow)
{
    Impairment impairment(awful, seed, flow);
    std::string copies;
    for (int i = 0; i < 40; ++i) {
        copies += std::to_string(impairment.next().copies);
    }
    return copies;
}

}  // namespace

TEST(Faults, ComeAtTheAskedRatesAndOnlyTheAskedOnes)
{
    const std::pair<Conditions, std::chrono::milliseconds> cases[] = {{{80ms, 30ms, 0, 0, 0}, 1ms},
                                                                      {{5ms, {}, 0, 0, mostReorder}, 50ms},
                                                                      {{80ms, 30ms, 0.5, 0.05, 0.4}, 16ms},
                                                                      {{{}, {}, 1, 0, 0}, 1ms},
                                                                      {{{}, {}, 0, 1, 0}, 1ms},
                                                                      {awful, 1ms}};
    for (const auto& [asked, interval] : cases) {
        std::map<int, int> copies;
        int newest = -1, late = 0, twice = 0;
        for (const int number : cross(asked, interval)) {
            const int copy = ++copies[number];
            twice += copy == 2 ? 1 : 0;
            late += copy == 1 && number < newest ? 1 : 0;
            newest = std::max(newest, number);
        }
        const auto arrived = static_cast<int>(copies.size());
        const auto expectShare = [](double share, int part, int whole) {
            const bool isExact = share == 0 || share == 1;
            EXPECT_NEAR(part, share * whole, isExact ? 0 : 0.01 * whole);
        };
        expectShare(asked.loss, sent - arrived, sent);
        expectShare(asked.duplicate, twice, arrived);
        expectShare(asked.reorder, late, arrived);
    }
}

TEST(Faults, DelaysAreUniformWithinTheJitter)
{
    Impairment impairment({80ms, 30ms, 0, 0, 0}, 1, firstLane);
    std::vector<Duration> delays(10'001);
    std::generate(delays.begin(), delays.end(), [&] { return impairment.next().delay; });
    std::sort(delays.begin(), delays.end());
    for (const unsigned quarter : {0U, 1U, 2U, 3U, 4U}) {
        EXPECT_NEAR(std::chrono::duration<double>(delays.at(quarter * 2'500)).count(), 0.05 + 0.015 * quarter,
                    0.001);
    }
}

TEST(Faults, FollowFromTheSeedAndTheLane)
{
    const std::string first = "2111111111110021111111010111101111111110";
    EXPECT_EQ(fates(1, firstLane), first) << "a seed means the same on every machine";
    EXPECT_NE(fates(2, firstLane), first);
    EXPECT_NE(fates(1, {Transport::stream, 1, Direction::toClient}), first);
    EXPECT_NE(fates(1, {Transport::datagrams, 2, Direction::toClient}), first);
    EXPECT_NE(fates(1, {Transport::datagrams, 1, Direction::toServer}), first);
}

TEST(Faults, AHeldDatagramThatNobodyOvertakesArrivesAfterTheHoldLimit)
{
    DelayQueue line(Impairment({10ms, {}, 0, 0, mostReorder}, 1, firstLane));
    line.push(start, "lonely");
    const Time due = start + 10ms + DelayQueue::holdLimit;
    EXPECT_EQ(line.nextDue(), due);
    EXPECT_EQ(line.pop(due - Duration(1)), std::nullopt);
    EXPECT_EQ(line.pop(due), "lonely");
    EXPECT_EQ(line.nextDue(), std::nullopt);
}

TEST(Faults, ALineThatIsFullLosesWhatComesButNotWhatItHas)
{
    DelayQueue line(Impairment({10ms, {}, 0, 0, 0}, 1, firstLane));
    const std::string large(DelayQueue::byteLimit / 2, 'x');
    EXPECT_TRUE(line.push(start, large));
    EXPECT_FALSE(line.push(start, large));
    std::size_t empty = 0;
    while (empty < DelayQueue::byteLimit && line.push(start, "")) {
        ++empty;
    }
    EXPECT_LT(empty, DelayQueue::byteLimit / 64) << "one without bytes takes memory, too";
    EXPECT_EQ(line.pop(start + 10ms), large);
    EXPECT_TRUE(line.push(start + 10ms, large.substr(1000)));
}
