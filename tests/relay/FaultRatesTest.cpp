#include "tests/relay/Milliseconds.h"
#include "tools/relay/DatagramLine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <utility>

using namespace relay;

namespace {

constexpr int sent = 20'000;
constexpr Lane firstLane = {Transport::datagrams, 1, Direction::toClient};
constexpr Time start{std::chrono::hours(1)};

struct Arrival
{
    int number;
    double delay;  ///< ms
};

/// A datagram in each interval (ms), taken out at the very times that the line names.
std::vector<Arrival> cross(const Conditions& conditions, std::uint32_t seed = 1, const Lane& lane = firstLane,
                           int interval = 1)
{
    DatagramLine line(Impairment(conditions, seed, lane));
    std::vector<Arrival> arrivals;
    const auto takeUntil = [&](Time end) {
        for (auto due = line.nextDue(); due && *due < end; due = line.nextDue()) {
            while (const auto datagram = line.pop(*due)) {
                const int number = std::stoi(*datagram);
                arrivals.push_back({number, inMilliseconds(*due - start) - number * interval});
            }
        }
    };
    for (int number = 0; number < sent; ++number) {
        const Time now = start + milliseconds(number * interval);
        takeUntil(now);
        EXPECT_TRUE(line.push(now, std::to_string(number)));
    }
    takeUntil(Time::max());
    return arrivals;
}

struct Rates
{
    double lost, duplicated, late;  ///< percent: of what was sent, and of what arrived
};

Rates ratesOf(const std::vector<Arrival>& arrivals)
{
    std::map<int, int> copies;
    int newest = -1, late = 0, twice = 0;
    for (const Arrival& arrival : arrivals) {
        if (++copies[arrival.number] == 2) {
            ++twice;
        } else {
            late += arrival.number < newest ? 1 : 0;
        }
        newest = std::max(newest, arrival.number);
    }
    const auto arrived = static_cast<double>(std::max<std::size_t>(1, copies.size()));
    return {100 - 100.0 * static_cast<double>(copies.size()) / sent, 100 * twice / arrived,
            100 * late / arrived};
}

std::vector<int> numbersOf(const std::vector<Arrival>& arrivals)
{
    std::vector<int> numbers;
    for (const Arrival& arrival : arrivals) {
        numbers.push_back(arrival.number);
    }
    return numbers;
}

constexpr Conditions awful = {milliseconds(80), milliseconds(30), 0.15, 0.05, 0.1};

}  // namespace

TEST(Faults, ComeAtTheAskedRatesAndOnlyTheAskedOnes)
{
    const std::pair<Conditions, int> cases[] = {{{}, 1},
                                                {{milliseconds(80), milliseconds(30), 0, 0, 0}, 1},
                                                {{{}, {}, 0.05, 0, 0}, 1},
                                                {{{}, {}, 0, 0.05, 0}, 1},
                                                {{milliseconds(5), {}, 0, 0, 0.05}, 1},
                                                {{milliseconds(5), {}, 0, 0, mostReorder}, 50},
                                                {{milliseconds(80), milliseconds(30), 0.15, 0.05, 0.4}, 16},
                                                {{{}, {}, 1, 0, 0}, 1},
                                                {{{}, {}, 0, 1, 0}, 1},
                                                {awful, 1}};
    for (const auto& [asked, interval] : cases) {
        const Rates rates = ratesOf(cross(asked, 1, firstLane, interval));
        const auto expectRate = [](double rate, double share, const char* fault) {
            const bool isExact = share == 0 || share == 1;
            EXPECT_NEAR(rate, 100 * share, isExact ? 0 : 1.0) << fault;  // 1 point: four standard deviations
        };
        expectRate(rates.lost, asked.loss, "loss");
        expectRate(rates.duplicated, asked.duplicate, "duplicate");
        expectRate(rates.late, asked.reorder, "reorder");
    }
}

TEST(Faults, DelaysAreUniformWithinTheJitter)
{
    const auto arrivals = cross({milliseconds(80), milliseconds(30), 0, 0, 0}, 1, firstLane, 100);
    const auto [least, most] =
        std::minmax_element(arrivals.begin(), arrivals.end(),
                            [](const Arrival& a, const Arrival& b) { return a.delay < b.delay; });
    EXPECT_NEAR(least->delay, 50, 0.1);
    EXPECT_NEAR(most->delay, 110, 0.1);
    const auto isShort = [](const Arrival& arrival) { return arrival.delay < 65; };
    const auto shorts = std::count_if(arrivals.begin(), arrivals.end(), isShort);
    EXPECT_NEAR(static_cast<double>(shorts), sent / 4, sent / 100);
}

TEST(Faults, FollowFromTheSeedAndTheLane)
{
    const std::vector<int> numbers = numbersOf(cross(awful));
    EXPECT_EQ(numbersOf(cross(awful)), numbers);
    EXPECT_NE(numbersOf(cross(awful, 2)), numbers);
    EXPECT_NE(numbersOf(cross(awful, 1, {Transport::datagrams, 2, Direction::toClient})), numbers);
    EXPECT_NE(numbersOf(cross(awful, 1, {Transport::datagrams, 1, Direction::toServer})), numbers);
    Impairment impairment(awful, 1, firstLane);
    std::string fates;
    for (int i = 0; i < 40; ++i) {
        fates += std::to_string(impairment.next().copies);
    }
    EXPECT_EQ(fates, "2111111111110021111111010111101111111110") << "a seed means the same on every machine";
}

TEST(Faults, AHeldDatagramThatNobodyOvertakesArrivesAfterTheHoldLimit)
{
    DatagramLine line(Impairment({milliseconds(10), {}, 0, 0, mostReorder}, 1, firstLane));
    line.push(start, "lonely");
    const Time due = start + milliseconds(10) + DatagramLine::holdLimit;
    EXPECT_EQ(line.nextDue(), due);
    EXPECT_EQ(line.pop(due - Duration(1)), std::nullopt);
    EXPECT_EQ(line.pop(due), "lonely");
    EXPECT_EQ(line.nextDue(), std::nullopt);
}

TEST(Faults, ALineThatIsFullLosesWhatComesButNotWhatItHas)
{
    DatagramLine line(Impairment({milliseconds(10), {}, 0, 0, 0}, 1, firstLane));
    const std::string large(DatagramLine::byteLimit / 2, 'x');
    EXPECT_TRUE(line.push(start, large));
    EXPECT_FALSE(line.push(start, large));
    std::size_t empty = 0;
    while (empty < DatagramLine::byteLimit && line.push(start, "")) {
        ++empty;
    }
    EXPECT_LT(empty, DatagramLine::byteLimit / 64) << "one without bytes takes memory, too";
    EXPECT_EQ(line.pop(start + milliseconds(10)), large);
    EXPECT_TRUE(line.push(start + milliseconds(10), large.substr(1000)));
}
