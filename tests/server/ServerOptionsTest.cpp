#include "server/net/ServerOptions.h"

#include <gtest/gtest.h>

#include <vector>

using namespace practice;

namespace {

std::variant<ServerOptions, commandline::End> read(std::vector<const char*> arguments)
{
    arguments.insert(arguments.begin(), "vantor-server");
    return readServerOptions(static_cast<int>(arguments.size()), arguments.data());
}

}  // namespace

TEST(ServerCommandLine, GivesItsValues)
{
    const auto given =
        std::get<ServerOptions>(read({"--port=0", "--bind", "0.0.0.0", "--bots", "64", "--difficulty", "hard",
                                      "--seed", "4294967295", "--spawn", "grid", "--score-limit", "0",
                                      "--time-limit", "86400", "--friendly-fire", "--log", "m.csv"}));
    EXPECT_EQ(given.port, 0);
    EXPECT_TRUE(given.bind.is_unspecified());
    EXPECT_EQ(given.bots, 64U);
    EXPECT_EQ(given.match.difficulty, Difficulty::hard);
    EXPECT_EQ(given.match.seed, 4294967295U);
    EXPECT_EQ(given.match.spawn, General::GRID);
    EXPECT_EQ(given.match.scoreLimit, 0);
    EXPECT_EQ(given.match.timeLimit, 86400);
    EXPECT_TRUE(given.match.friendlyFire);
    EXPECT_EQ(given.measurements, "m.csv");
}

TEST(ServerCommandLine, EndsWithOneLineAndAStatusOrWithHelp)
{
    EXPECT_EQ(std::get<commandline::End>(read({"--help"})).status, 0);
    for (const char* bad : {"--port=65536", "--bots=65", "--seed=4294967296", "--score-limit=1e3",
                            "--time-limit=86401", "--bind=localhost", "--bind=224.0.0.1",
                            "--bind=255.255.255.255", "--difficulty=easyy", "--spawn=0", "--bots=a\nb"}) {
        const auto end = std::get<commandline::End>(read({bad}));
        EXPECT_EQ(end.status, 2) << bad;
        EXPECT_EQ(end.text.find('\n'), end.text.size() - 1) << end.text;
    }
    EXPECT_EQ(std::get<commandline::End>(read({"--log", ""})).status, 2);
    EXPECT_NE(std::get<commandline::End>(read({"--spawn", "x"})).text.find("random, grid, fixed"),
              std::string::npos);
}
