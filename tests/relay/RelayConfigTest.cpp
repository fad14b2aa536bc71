#include "relay/RelayConfig.h"
#include "service/CommandLine.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

using namespace relay;

namespace {

/// Reads a line as a shell would pass it. Returns the values, or the text and the status to end with.
std::string read(const std::string& line)
{
    std::vector<const char*> arguments = {"vantor-relay"};
    const auto words = CLI::detail::split_up(line);
    for (const std::string& word : words) {
        arguments.push_back(word.c_str());
    }
    RelayConfig config;
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    const auto status = readCommandLine(static_cast<int>(arguments.size()), arguments.data(), config);
    std::ostringstream text;
    text << testing::internal::GetCapturedStderr() << testing::internal::GetCapturedStdout();
    if (status) {
        text << "status " << *status;
    } else {
        text << config.serverHost << ' ' << config.serverPort << ' ' << config.port << ' '
             << config.recordPath << ' ' << config.replayPath << ' ' << config.replaySpeed << ' '
             << describe(config);
    }
    return text.str();
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
        {"--to host:1 --loss 12.5 --network mobile --cut-after 0.5",
         "host 1 0   1 80±30 ms, loss 12.5%, duplicate 1%, reorder 2%, seed 1, cut after 0.5 s"}};
    for (const auto& [line, expected] : cases) {
        EXPECT_EQ(read(line), expected);
    }
}

TEST(RelayCommandLine, IsRefusedWithOneLine)
{
    const std::string lines =
        "--listen 1;--to nowhere;--to :1;--to h:65536;--to h:0;--to h:1 stray;--to h:1 --listen 65536;"
        "--to h:1 --record '';--to h:1 --speed 2;--to h:1 --reorder 51;--to h:1 --duplicate 101;"
        "--to h:1 --lat 5;--to h:1 --seed -1;--to h:1 --loss 101;--to h:1 --jitter nan;"
        "--to h:1 --latency 10001;--to h:1 --cut-after 86401;--to h:1 --network bad;--to h:1 --replay f;"
        "--replay '';--replay f --record g;--replay f --seed 2;--replay f --speed 0;--replay f --speed 51";
    for (const std::string& line : CLI::detail::split(lines, ';')) {
        const std::string text = read(line);
        EXPECT_EQ(text.substr(text.find('\n')), "\nstatus 2") << line << ": " << text;
    }
}

TEST(RelayCommandLine, HelpListsTheNetworks)
{
    const std::string text = read("--help");
    EXPECT_EQ(text.substr(text.rfind('\n')), "\nstatus 0");
    EXPECT_NE(text.find("dsl: 40±8 ms, loss 0.5%\n"), std::string::npos) << text;
    EXPECT_NE(text.find("awful: 200±100 ms, loss 15%, duplicate 5%, reorder 10%\n"), std::string::npos);
}
