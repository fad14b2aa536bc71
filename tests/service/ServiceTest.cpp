#include "service/CommandLine.h"
#include "service/PortPair.h"
#include "service/StatusLine.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

namespace {

/// The value of a program's only option; -1 if one line refuses it.
double valueOf(const std::string& argument)
{
    unsigned whole = 0;
    double decimal = 0;
    CLI::App app("", "program");
    app.add_option("--whole", whole)->transform(commandline::wholeNumber(300));
    app.add_option("--decimal", decimal)->check(commandline::decimalNumber(300));
    const char* const arguments[] = {"program", argument.c_str()};
    testing::internal::CaptureStderr();
    const std::optional<int> status = commandline::parse(app, 2, arguments);
    const std::string text = testing::internal::GetCapturedStderr();
    return status == 2 && text.find('\n') == text.size() - 1 ? -1 : whole + decimal;
}

}  // namespace

TEST(CommandLine, TakesPlainNumbersWithinTheirRange)
{
    EXPECT_EQ(valueOf("--whole=0"), 0);
    EXPECT_EQ(valueOf("--whole=300"), 300);
    EXPECT_EQ(valueOf("--whole=010"), 10);
    EXPECT_EQ(valueOf("--decimal=300"), 300);
    EXPECT_EQ(valueOf("--decimal=.5"), 0.5);
    for (const std::string bad :
         {"", ".", " 1", "1 ", "1\n", "-1", "+1", "1e3", "0x1", "1.2.3", "nan", "inf", "301"}) {
        EXPECT_EQ(valueOf("--whole=" + bad), -1) << bad;
        EXPECT_EQ(valueOf("--decimal=" + bad), -1) << bad;
    }
}

TEST(PortPair, OpensBothTransportsOrNone)
{
    boost::asio::io_context io;
    const PortPair pair(io, 0);
    EXPECT_EQ(pair.udp.local_endpoint().port(), pair.number());
    boost::asio::ip::udp::socket taken(io, {boost::asio::ip::address_v4::loopback(), 0});
    const auto countDescriptors = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    };
    const auto before = countDescriptors();
    for (const std::uint16_t port : {pair.number(), taken.local_endpoint().port()}) {
        EXPECT_THROW(PortPair(io, port), boost::system::system_error);
        EXPECT_EQ(countDescriptors(), before) << "a socket stayed open";
    }
}

TEST(StatusLine, IsLeftOutWhereItWouldBlockOrTheDiskIsFull)
{
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const std::string filler(static_cast<std::size_t>(fcntl(ends[1], F_GETPIPE_SZ)), 'x');
    ASSERT_EQ(write(ends[1], filler.data(), filler.size()), filler.size());
    const auto report = [&] {
        dup2(ends[1], STDOUT_FILENO);
        alarm(10);
        writeStatusLine("left out");
        dup2(open("/dev/full", O_WRONLY | O_CLOEXEC), STDOUT_FILENO);
        writeStatusLine("full");
        dup2(STDERR_FILENO, STDOUT_FILENO);
        writeStatusLine("kept");
        _exit(0);
    };
    EXPECT_EXIT(report(), testing::ExitedWithCode(0), "^[^f]*kept\n$");
}
