#include "server/net/ServerOptions.h"

#include <gtest/gtest.h>

#include <vector>

using namespace practice;

namespace {

std::optional<int> read(std::vector<const char*> arguments, ServerOptions& options)
{
    arguments.insert(arguments.begin(), "vantor-server");
    return readServerOptions(static_cast<int>(arguments.size()), arguments.data(), options);
}

}  // namespace

TEST(ServerOptions, TakeTheirValues)
{
    ServerOptions given;
    EXPECT_EQ(read({"--port=0", "--bind", "0.0.0.0", "--bots", "064", "--difficulty", "hard", "--seed",
                    "4294967295", "--spawn", "grid", "--score-limit", "0", "--time-limit", "86400",
                    "--friendly-fire", "--log", "m.csv"},
                   given),
              std::nullopt);
    EXPECT_EQ(given.server.port, 0);
    EXPECT_TRUE(given.server.bind.is_unspecified());
    EXPECT_EQ(given.server.bots, 64U);
    EXPECT_EQ(given.server.match.difficulty, Difficulty::hard);
    EXPECT_EQ(given.server.match.seed, 4294967295U);
    EXPECT_EQ(given.server.match.spawn, General::GRID);
    EXPECT_EQ(given.server.match.scoreLimit, 0);
    EXPECT_EQ(given.server.match.timeLimit, 86400);
    EXPECT_TRUE(given.server.match.friendlyFire);
    EXPECT_EQ(given.measurements, "m.csv");
}

TEST(ServerOptions, RefuseBadValuesWithOneLine)
{
    for (const char* bad :
         {"--port=65536", "--bots=65", "--bots=", "--seed=4294967296", "--score-limit=10001",
          "--time-limit=86401", "--bind=localhost", "--bind=224.0.0.1", "--bind=255.255.255.255",
          "--difficulty=easyy", "--spawn=0", "--bots=a\nb", "--log=", "stray", "--por=1",
          "--%original_token%", "%value%", "--friendly-fire=no"}) {
        ServerOptions options;
        testing::internal::CaptureStderr();
        EXPECT_EQ(read({bad}, options), 2) << bad;
        const std::string text = testing::internal::GetCapturedStderr();
        EXPECT_EQ(text.find('\n'), text.size() - 1) << text;
    }
}
