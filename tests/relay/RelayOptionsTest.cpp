#include "tests/relay/Milliseconds.h"
#include "tools/relay/RelayOptions.h"

#include <gtest/gtest.h>

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
    const auto given = std::get<RelayOptions>(read({"--to", "[::1]:21042", "--listen=7", "--network",
                                                    "mobile", "--loss", "12.5", "--cut-after", "0.5"}));
    EXPECT_EQ(given.config.serverHost, "::1");
    EXPECT_EQ(given.config.serverPort, "21042");
    EXPECT_EQ(given.config.port, 7);
    EXPECT_EQ(given.config.cutAfter, milliseconds(500));
    EXPECT_EQ(describe(given.config.conditions), "80±30 ms, loss 12.5%, duplicate 1%, reorder 2%");
    const auto replay = std::get<RelayOptions>(read({"--replay", "file", "--speed", "2"}));
    EXPECT_EQ(replay.replayPath, "file");
    EXPECT_EQ(replay.replaySpeed, 2);
}

TEST(RelayCommandLine, EndsWithAStatusAndALineWhereItIsBad)
{
    EXPECT_EQ(std::get<commandline::End>(read({"--help"})).status, 0);
    const std::vector<const char*> bad[] = {{},
                                            {"--to", "nowhere"},
                                            {"--to", ":1"},
                                            {"--to", "host:65536"},
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
