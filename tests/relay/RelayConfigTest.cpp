#include "relay/RelayConfig.h"
#include "service/CommandLine.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

using namespace relay;

namespace {

/// Reads a line as a shell would pass it. Returns the status to end with, or -1.
int read(const std::string& line, RelayConfig& config)
{
    std::vector<const char*> arguments = {"vantor-relay"};
    const auto words = CLI::detail::split_up(line);
    for (const std::string& word : words) {
        arguments.push_back(word.c_str());
    }
    return readCommandLine(static_cast<int>(arguments.size()), arguments.data(), config).value_or(-1);
}

}  // namespace

TEST(RelayCommandLine, SetsEachValue)
{
    const std::pair<const char*, const char*> cases[] = {
        {"--to [::1]:0021042 --listen=010 --record out --latency 4", "::1 21042 10 out  1 4±0 ms, seed 1"},
        {"--replay in --speed 2 --listen 7", "  7  in 2 no faults"},
        {"--to host:1 --jitter 2.5 --loss 100 --duplicate 3 --reorder 50",
         "host 1 0   1 0±2.5 ms, loss 100%, duplicate 3%, reorder 50%, seed 1"},
        {"--to host:1 --network good --seed 7", "host 1 0   1 15±2 ms, seed 7"},
        {"--to host:1 --network dsl", "host 1 0   1 40±8 ms, loss 0.5%, seed 1"},
        {"--to host:1 --loss 12.5 --network mobile --cut-after 0.5",
         "host 1 0   1 80±30 ms, loss 12.5%, duplicate 1%, reorder 2%, seed 1, cut after 0.5 s"},
        {"--to host:1 --network awful",
         "host 1 0   1 200±100 ms, loss 15%, duplicate 5%, reorder 10%, seed 1"}};
    for (const auto& [line, expected] : cases) {
        RelayConfig config;
        EXPECT_EQ(read(line, config), -1);
        std::ostringstream text;
        text << config.serverHost << ' ' << config.serverPort << ' ' << config.port << ' '
             << config.recordPath << ' ' << config.replayPath << ' ' << config.replaySpeed << ' '
             << describe(config);
        EXPECT_EQ(text.str(), expected);
    }
}

TEST(RelayCommandLine, IsRefusedWithOneLine)
{
    for (const char* line : {"",
                             "--to nowhere",
                             "--to :1",
                             "--to host:65536",
                             "--to host:0",
                             "--to host:1 stray",
                             "--listen 65536",
                             "--to host:1 --record ''",
                             "--to host:1 --speed 2",
                             "--to host:1 --reorder 51",
                             "--to host:1 --lat 5",
                             "--to host:1 --seed -1",
                             "--to host:1 --loss 101",
                             "--to host:1 --jitter nan",
                             "--to host:1 --latency 10001",
                             "--to host:1 --cut-after 86401",
                             "--to host:1 --network bad",
                             "--to host:1 --replay file",
                             "--replay ''",
                             "--replay file --seed 2",
                             "--replay file --cut-after 2",
                             "--replay file --speed 0",
                             "--replay file --speed 51",
                             "--%original_token%"}) {
        RelayConfig config;
        testing::internal::CaptureStderr();
        EXPECT_EQ(read(line, config), 2) << line;
        const std::string text = testing::internal::GetCapturedStderr();
        EXPECT_EQ(text.find('\n'), text.size() - 1) << text;
    }
}

TEST(RelayCommandLine, HelpListsTheNetworks)
{
    RelayConfig config;
    testing::internal::CaptureStdout();
    EXPECT_EQ(read("--help", config), 0);
    const std::string text = testing::internal::GetCapturedStdout();
    for (const char* network : {"good: 15±2 ms", "dsl: 40±8 ms, loss 0.5%", "mobile: 80", "awful: 200"}) {
        EXPECT_NE(text.find(network), std::string::npos) << text;
    }
}
