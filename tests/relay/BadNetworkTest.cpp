#include "relay/RelayConfig.h"
#include "service/CommandLine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <sstream>

using namespace relay;
using namespace std::chrono_literals;

namespace {

constexpr Time start{std::chrono::hours(1)};

/// Reads a line as a shell would pass it. Returns the values, or the status to end with.
std::string read(const std::string& line)
{
    std::vector<const char*> arguments = {"vantor-relay"};
    std::istringstream text(line);
    const std::vector<std::string> words(std::istream_iterator<std::string>{text}, {});
    for (const std::string& word : words) {
        arguments.push_back(word.c_str());
    }
    RelayConfig config;
    if (const auto status = readCommandLine(static_cast<int>(arguments.size()), arguments.data(), config)) {
        return "status " + std::to_string(*status);
    }
    std::ostringstream values;
    values << config.serverHost << ' ' << config.serverPort << ' ' << config.port << ' ' << config.recordPath
           << ' ' << config.replayPath << ' ' << config.replaySpeed << ' ' << describe(config);
    return values.str();
}

}  // namespace

// A datagram is sent in each interval, and taken out exactly when it is due.
TEST(Faults, ComeAtTheAskedRates)
{
    constexpr int sent = 20'000;
    const std::pair<Conditions, std::chrono::milliseconds> cases[] = {
        {{80, 30, 0, 0, 0}, 1ms}, {{5, 0, 0, 0, mostReorder}, 50ms}, {{80, 30, 50, 5, 40}, 16ms}};
    for (const auto& [asked, interval] : cases) {
        DelayQueue queue(Impairment(asked, 1, {Transport::datagrams, 1, Direction::toClient}));
        std::map<int, int> arrived;
        int newest = -1, late = 0, twice = 0;
        for (int sending = 0; sending <= sent; ++sending) {
            const Time now = sending == sent ? Time::max() : start + sending * interval;
            for (Time due = queue.nextDue(); due < now; due = queue.nextDue()) {
                const int number = std::stoi(queue.pop(due).value());
                const bool isFirst = ++arrived[number] == 1;
                twice += isFirst ? 0 : 1;
                late += isFirst && number < newest ? 1 : 0;
                newest = std::max(newest, number);
            }
            EXPECT_TRUE(sending == sent || queue.push(now, std::to_string(sending)));
        }
        const auto whole = double(arrived.size());
        EXPECT_NEAR(whole / sent, 1 - asked.loss / 100, 0.01);
        EXPECT_NEAR(twice / whole, asked.duplicate / 100, 0.01);
        EXPECT_NEAR(late / whole, asked.reorder / 100, 0.01);
    }
}

// Of each datagram: how often it arrives, how many overtake it, and its delay in ms.
TEST(Faults, FollowFromSeedAndFlow)
{
    const auto decisions = [](const Flow& flow) {
        Impairment impairment({20, 30, 40, 10, 40}, 5, flow);
        std::ostringstream text;
        for (int i = 0; i < 10; ++i) {
            const auto [copies, delay, overtakenBy] = impairment.next();
            text << copies << ' ' << overtakenBy << ' ' << delay / 1ms << ", ";
        }
        return text.str();
    };
    EXPECT_EQ(decisions({Transport::datagrams, 3, Direction::toClient}),
              "0 3 22, 1 0 40, 1 2 36, 1 0 15, 1 3 41, 1 0 0, 0 2 7, 1 2 48, 0 0 10, 2 0 49, ")
        << "a seed means the same on every machine";
    EXPECT_EQ(decisions({Transport::stream, 3, Direction::toClient}),
              "1 0 2, 1 0 39, 1 0 9, 1 0 39, 1 0 32, 1 0 8, 1 0 0, 1 0 44, 1 0 35, 1 0 23, ");
}

TEST(Faults, CorruptCutAndSlowDownAsAsked)
{
    DelayQueue queue(Impairment({0, 0, 0, 0, 0, 50, 8, 400}, 1, {Transport::stream, 1, Direction::toClient}));
    EXPECT_TRUE(queue.push(start, std::string(100'000, 'x')));
    std::string arrived;
    Time due;
    int pieces = 0;
    for (; queue.size() > 0; ++pieces) {
        due = queue.nextDue();
        arrived += queue.pop(due).value();
    }
    EXPECT_EQ(arrived.size(), 100'000U);
    EXPECT_NEAR(double(std::count(arrived.begin(), arrived.end(), 'x')), 99'950, 12);
    EXPECT_NEAR(double((due - start) / 1ms), 12'500, 1);
    EXPECT_NEAR(pieces, 500, 40);
}

TEST(DelayQueue, LosesWhatComesWhileItIsFull)
{
    DelayQueue queue(Impairment({10}, 1, {Transport::datagrams, 1, Direction::toClient}));
    const std::string large(DelayQueue::byteLimit / 2, 'x');
    EXPECT_TRUE(queue.push(start, large));
    EXPECT_GT(queue.size(), large.size()) << "a datagram without bytes takes memory, too";
    EXPECT_FALSE(queue.push(start, large));
    EXPECT_EQ(queue.pop(start + 9ms), std::nullopt);
    EXPECT_EQ(queue.pop(start + 10ms), large);
    EXPECT_TRUE(queue.push(start + 10ms, large));

    DelayQueue slow(Impairment({0, 0, 0, 0, 0, 0, 8}, 1, {Transport::datagrams, 1, Direction::toClient}));
    for (int i = 0; i < 9; ++i) {
        slow.push(start, std::string(1000, 'x'));
    }
    EXPECT_EQ(slow.size() / 1000, 3U) << "250 ms are full";
}

TEST(RelayCommandLine, SetsEachValueOrIsRefused)
{
    const std::pair<const char*, const char*> cases[] = {
        {"--to [::1]:0021042 --listen=010 --record out --latency 4", "::1 21042 10 out  1 4±0 ms, seed 1"},
        {"--replay in --speed 2 --listen 7", "  7  in 2 no faults"},
        {"--to host:1 --jitter 2.5 --loss 100 --duplicate 3 --reorder 50",
         "host 1 0   1 0±2.5 ms, loss 100%, duplicate 3%, reorder 50%, seed 1"},
        {"--to host:1 --corrupt .5 --bandwidth 8 --pieces 9 --cut-after 2 --cut-with reset",
         "host 1 0   1 0±0 ms, corrupt 0.5%, 8 kB/s, pieces of at most 9 bytes, seed 1, cut after 2 s by a "
         "reset"},
        {"--to host:1 --network good --seed 7", "host 1 0   1 15±2 ms, seed 7"},
        {"--to host:1 --network dsl", "host 1 0   1 40±8 ms, loss 0.5%, seed 1"},
        {"--to host:1 --loss 12.5 --network awful --cut-after 0.5",
         "host 1 0   1 200±100 ms, loss 12.5%, duplicate 5%, reorder 10%, seed 1, cut after 0.5 s"}};
    for (const auto& [line, expected] : cases) {
        EXPECT_EQ(read(line), expected);
    }
    for (const char* line :
         {"--listen 1", "--to nowhere", "--to :1", "--to h:65536", "--to h:0", "--to h:1 --reorder 51",
          "--to h:1 --loss 101", "--to h:1 --cut-with x", "--to h:1 --replay f", "--replay f --record g",
          "--to h:1 --bandwidth .00000000000000000000001", "--to h:1 --corrupt .009", "--replay f --speed 0",
          "--replay f --speed 51"}) {
        EXPECT_EQ(read(line), "status 2") << line;
    }
}
