#include "tests/relay/Milliseconds.h"
#include "tools/relay/RelayOptions.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

using namespace relay;

namespace {

std::variant<RelayOptions, commandline::End> read(std::vector<const char*> arguments)
{
    arguments.insert(arguments.begin(), "vantor-relay");
    return readRelayOptions(static_cast<int>(arguments.size()), arguments.data());
}

}  // namespace

TEST(RelayCommandLine, GivesItsValues)
{
    const auto given =
        std::get<RelayOptions>(read({"--to", "[::1]:21042", "--listen=7", "--network", "mobile", "--loss",
                                     "12.5", "--seed", "9", "--cut-after", "0.5", "--record", "out"}));
    EXPECT_EQ(given.config.serverHost, "::1");
    EXPECT_EQ(given.config.serverPort, "21042");
    EXPECT_EQ(given.config.port, 7);
    EXPECT_EQ(given.config.cutAfter, milliseconds(500));
    EXPECT_EQ(describe(given.config),
              "80±30 ms, loss 12.5%, duplicate 1%, reorder 2%, seed 9, cut after 0.5 s");
    EXPECT_EQ(given.recordPath, "out");
    const auto replay = std::get<RelayOptions>(read({"--replay", "file", "--speed", "2"}));
    EXPECT_EQ(replay.replayPath, "file");
    EXPECT_EQ(replay.replaySpeed, 2);
}

TEST(RelayCommandLine, SetsEachFault)
{
    const std::pair<std::vector<const char*>, const char*> cases[] = {
        {{"--latency", "4"}, "4±0 ms, seed 1"},
        {{"--jitter", "2.5", "--loss", "100", "--duplicate", "3", "--reorder", "50"},
         "0±2.5 ms, loss 100%, duplicate 3%, reorder 50%, seed 1"},
        {{"--network", "good"}, "15±2 ms, seed 1"},
        {{"--network", "dsl"}, "40±8 ms, loss 0.5%, seed 1"},
        {{"--network", "awful"}, "200±100 ms, loss 15%, duplicate 5%, reorder 10%, seed 1"},
        {{"--seed", "7"}, "no faults"}};
    for (auto [arguments, description] : cases) {
        arguments.insert(arguments.end(), {"--to", "host:1"});
        EXPECT_EQ(describe(std::get<RelayOptions>(read(arguments)).config), description);
    }
}

TEST(RelayCommandLine, EndsWithAStatusAndALineWhereItIsBad)
{
    EXPECT_EQ(std::get<commandline::End>(read({"--help"})).status, 0);
    const std::vector<const char*> bad[] = {{},
                                            {"--to", "nowhere"},
                                            {"--to", ":1"},
                                            {"--to", "host:65536"},
                                            {"--to", "host:0"},
                                            {"--to", "host:1", "--record", ""},
                                            {"--to", "host:1", "--reorder", "51"},
                                            {"--to", "host:1", "--seed", "-1"},
                                            {"--replay", ""},
                                            {"--replay", "file", "--seed", "2"},
                                            {"--replay", "file", "--speed", "51"},
                                            {"--to", "host:1", "--replay", "file"},
                                            {"--to", "host:1", "--speed", "2"},
                                            {"--to", "host:1", "--loss", "101"},
                                            {"--to", "host:1", "--loss", "-1"},
                                            {"--to", "host:1", "--jitter", "nan"},
                                            {"--to", "host:1", "--latency", "1e3"},
                                            {"--to", "host:1", "--network", "bad"},
                                            {"--replay", "file", "--speed", "0"},
                                            {"--replay", "file", "--loss", "1"},
                                            {"--to", "host:1", "stray"}};
    for (const auto& arguments : bad) {
        const auto end = std::get<commandline::End>(read(arguments));
        EXPECT_EQ(end.status, 2) << end.text;
        EXPECT_EQ(end.text.find('\n'), end.text.size() - 1) << end.text;
    }
}
