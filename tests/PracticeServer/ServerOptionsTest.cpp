#include "PracticeServer/ServerOptions.h"

#include <gtest/gtest.h>

#include <vector>

using namespace practice;

TEST(ServerCommandLine, GivesItsValuesOrEndsWithAStatusAndAText)
{
    const auto read = [](std::vector<const char*> arguments) {
        arguments.insert(arguments.begin(), "vantor-server");
        return readServerOptions(static_cast<int>(arguments.size()), arguments.data());
    };
    const auto given = std::get<ServerOptions>(read({"--port=0", "--bots", "64", "--seed", "4294967295"}));
    EXPECT_EQ(given.port, 0);
    EXPECT_EQ(given.bots, 64U);
    EXPECT_EQ(given.seed, 4294967295U);
    EXPECT_EQ(std::get<OptionsEnd>(read({"--help"})).status, 0);
    const std::vector<const char*> bad[] = {
        {"--port", "65536"}, {"--port", "-1"}, {"--port", "12x"}, {"--bots", "65"},
        {"--seed"},          {"--po", "1"},    {"stray"}};
    for (const auto& arguments : bad) {
        const auto end = std::get<OptionsEnd>(read(arguments));
        EXPECT_EQ(end.status, 2) << arguments.back();
        EXPECT_EQ(end.text.find('\n'), end.text.size() - 1) << end.text;
    }
}
