#include "relay/RelayOptions.h"

#include <boost/program_options/parsers.hpp>

#include <gtest/gtest.h>

#include <utility>
#include <vector>

using namespace relay;

namespace {

/// As a shell would pass the words on.
std::variant<RelayOptions, commandline::End> read(const std::string& line)
{
    const auto words = boost::program_options::split_unix("vantor-relay " + line);
    std::vector<const char*> arguments;
    for (const std::string& word : words) {
        arguments.push_back(word.c_str());
    }
    return readRelayOptions(static_cast<int>(arguments.size()), arguments.data());
}

}  // namespace

TEST(RelayCommandLine, GivesItsValues)
{
    const auto given = std::get<RelayOptions>(read(
        "--to [::1]:21042 --listen=7 --network mobile --loss 12.5 --seed 9 --cut-after 0.5 --record out"));
    EXPECT_EQ(given.config.serverHost, "::1");
    EXPECT_EQ(given.config.serverPort, "21042");
    EXPECT_EQ(given.config.port, 7);
    EXPECT_EQ(given.recordPath, "out");
    EXPECT_EQ(describe(given.config),
              "80±30 ms, loss 12.5%, duplicate 1%, reorder 2%, seed 9, cut after 0.5 s");
    const auto replay = std::get<RelayOptions>(read("--replay file --speed 2"));
    EXPECT_EQ(replay.replayPath, "file");
    EXPECT_EQ(replay.replaySpeed, 2);
}

TEST(RelayCommandLine, SetsEachFault)
{
    const std::pair<const char*, const char*> cases[] = {
        {"--latency 4", "4±0 ms, seed 1"},
        {"--jitter 2.5 --loss 100 --duplicate 3 --reorder 50",
         "0±2.5 ms, loss 100%, duplicate 3%, reorder 50%, seed 1"},
        {"--network good", "15±2 ms, seed 1"},
        {"--network dsl", "40±8 ms, loss 0.5%, seed 1"},
        {"--network awful", "200±100 ms, loss 15%, duplicate 5%, reorder 10%, seed 1"},
        {"--seed 7", "no faults"}};
    for (const auto& [faults, description] : cases) {
        const auto options = std::get<RelayOptions>(read(std::string("--to host:1 ") + faults));
        EXPECT_EQ(describe(options.config), description);
    }
}

TEST(RelayCommandLine, EndsWithAStatusAndALineWhereItIsBad)
{
    EXPECT_EQ(std::get<commandline::End>(read("--help")).status, 0);
    for (const char* line :
         {"", "--to nowhere", "--to :1", "--to host:65536", "--to host:0", "--to host:1 stray",
          "--to host:1 --record ''", "--to host:1 --speed 2", "--to host:1 --reorder 51",
          "--to host:1 --seed -1", "--to host:1 --loss 101", "--to host:1 --jitter nan",
          "--to host:1 --network bad", "--to host:1 --replay file", "--replay ''", "--replay file --seed 2",
          "--replay file --speed 0", "--replay file --speed 51"}) {
        const auto end = std::get<commandline::End>(read(line));
        EXPECT_EQ(end.status, 2) << line;
        EXPECT_EQ(end.text.find('\n'), end.text.size() - 1) << end.text;
    }
}
