#include "service/CommandLine.h"
#include "service/LogOnce.h"
#include "service/PortPair.h"
#include "service/StatusLine.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <vector>

namespace {

/// The status of a command line of one option each of the number's kinds, and their values.
std::optional<int> parse(const char* argument, unsigned& whole, double& decimal)
{
    CLI::App app("", "program");
    app.add_option("--whole", whole)->transform(commandline::wholeNumber(300));
    app.add_option("--decimal", decimal)->check(commandline::decimalNumber(100));
    const char* const arguments[] = {"program", argument};
    return commandline::parse(app, 2, arguments);
}

int freeDescriptor()
{
    const int result = dup(0);
    close(result);
    return result;
}

}  // namespace

TEST(CommandLine, TakesPlainNumbersWithinTheirRange)
{
    const std::pair<const char*, double> good[] = {
        {"--whole=0", 0},       {"--whole=300", 300},       {"--whole=010", 10},  {"--decimal=0", 0},
        {"--decimal=100", 100}, {"--decimal=12.25", 12.25}, {"--decimal=.5", 0.5}};
    for (const auto& [argument, value] : good) {
        unsigned whole = 0;
        double decimal = 0;
        EXPECT_EQ(parse(argument, whole, decimal), std::nullopt) << argument;
        EXPECT_EQ(whole + decimal, value) << argument;
    }
    for (const char* bad :
         {"", ".", " 1", "1 ", "-1", "+1", "1e3", "0x1", "1,5", "1.2.3", "nan", "inf", "301"}) {
        for (const std::string option : {"--whole=", "--decimal="}) {
            unsigned whole = 0;
            double decimal = 0;
            testing::internal::CaptureStderr();
            EXPECT_EQ(parse((option + bad).c_str(), whole, decimal), 2) << option << bad;
            const std::string text = testing::internal::GetCapturedStderr();
            EXPECT_EQ(text.find('\n'), text.size() - 1) << text;
        }
    }
}

TEST(LogOnce, LogsARepeatedErrorAgainOnlyAfterItWasOver)
{
    std::string lines;
    LogOnce errors([&lines](const std::string& line) { lines += line; });
    for (const char* line : {"a", "a", "b", "a", "", "a", "a"}) {
        *line == '\0' ? errors.clear() : errors.log(line);
    }
    EXPECT_EQ(lines, "abaa");
}

TEST(PortPair, OpensBothTransportsOrNone)
{
    boost::asio::io_context io;
    const PortPair pair(io, 0);
    EXPECT_EQ(pair.udp.local_endpoint().port(), pair.number());
    boost::asio::ip::udp::socket taken(io, {boost::asio::ip::address_v4::loopback(), 0});
    const int descriptor = freeDescriptor();
    for (const std::uint16_t port : {pair.number(), taken.local_endpoint().port()}) {
        EXPECT_THROW(PortPair(io, port), boost::system::system_error);
        EXPECT_EQ(freeDescriptor(), descriptor) << "a socket stayed open";
    }
}

TEST(StatusLine, IsLeftOutWhereItWouldBlock)
{
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
    const std::string filler(4096, 'x');
    while (write(ends[1], filler.data(), filler.size()) > 0) {
    }
    fcntl(ends[1], F_SETFL, 0);  // from now on a write to the full pipe blocks
    const int output = dup(STDOUT_FILENO);
    dup2(ends[1], STDOUT_FILENO);
    alarm(10);
    writeStatusLine("lost");
    alarm(0);
    dup2(output, STDOUT_FILENO);
    for (const int end : {ends[0], ends[1], output}) {
        close(end);
    }
}
