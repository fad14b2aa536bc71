#include "PracticeServer/ServerOptions.h"

#include <gtest/gtest.h>

#include <vector>

using namespace practice;

namespace {

std::variant<ServerOptions, OptionsEnd> read(std::vector<const char*> arguments)
{
    arguments.insert(arguments.begin(), "vantor-server");
    return readServerOptions(static_cast<int>(arguments.size()), arguments.data());
}

}  // namespace

TEST(ServerCommandLine, GivesItsValuesOrTheDefaults)
{
    const auto standard = std::get<ServerOptions>(read({}));
    EXPECT_EQ(standard.port, 21042);
    EXPECT_EQ(standard.bots, 8U);
    const auto given = std::get<ServerOptions>(read({"--port=0", "--bots", "64", "--seed", "4294967295"}));
    EXPECT_EQ(given.port, 0);
    EXPECT_EQ(given.bots, 64U);
    EXPECT_EQ(given.seed, 4294967295U);
}

TEST(ServerCommandLine, BadValuesEndWithStatusTwoAndOneLine)
{
    const std::vector<std::vector<const char*>> cases = {{"--port", "65536"},
                                                         {"--port", "-1"},
                                                         {"--port", "12x"},
                                                         {"--port", ""},
                                                         {"--bots", "65"},
                                                         {"--bots", "-1"},
                                                         {"--seed", "4294967296"},
                                                         {"--seed"},
                                                         {"--po", "1"},
                                                         {"stray"},
                                                         {"--seed", "1", "--seed", "2"}};
    for (const auto& arguments : cases) {
        SCOPED_TRACE(arguments.back());
        const auto result = read(arguments);
        ASSERT_TRUE(std::holds_alternative<OptionsEnd>(result));
        const auto& end = std::get<OptionsEnd>(result);
        EXPECT_EQ(end.status, 2);
        EXPECT_EQ(end.text.find('\n'), end.text.size() - 1);
    }
}

TEST(ServerCommandLine, HelpNamesEveryOption)
{
    const auto end = std::get<OptionsEnd>(read({"--help"}));
    EXPECT_EQ(end.status, 0);
    for (const char* option : {"--help", "--port", "--bots", "--seed"}) {
        EXPECT_NE(end.text.find(option), std::string::npos) << option;
    }
}
