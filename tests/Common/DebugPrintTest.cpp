#include "Common/DebugPrint.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <string>

TEST(DebugPrint, FormatsLikePrintfAndCutsATextThatIsTooLongButNotItsLineEnd)
{
    const std::string name(60000, 'n');
    testing::internal::CaptureStdout();
    DebugPrint("%s scored %d of %.1f%%", "Rosa", -3, 12.5);
    DebugPrint("%s", name.c_str());
    DebugPrint("%s\n", name.c_str());
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Rosa scored -3 of 12.5%" + name.substr(0, 9999) + name.substr(0, 9998) + "\n");
}

// A signal that breaks the wait for a reader off must not lead into a write that blocks; the
// time-out of the test tells.
TEST(DebugPrint, DropsWhatNobodyReadsUntilSomebodyReadsAgain)
{
    std::signal(SIGALRM, [](int) {});
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    std::string taken(static_cast<std::size_t>(fcntl(ends[1], F_GETPIPE_SZ)), '.');
    ASSERT_EQ(write(ends[1], taken.data(), taken.size()), static_cast<ssize_t>(taken.size()));
    const int terminal = dup(STDOUT_FILENO);
    dup2(ends[1], STDOUT_FILENO);

    ualarm(300000, 0);
    DebugPrint("dropped, the wait broken off\n");
    DebugPrint("dropped\n");
    ASSERT_EQ(read(ends[0], taken.data(), taken.size()), static_cast<ssize_t>(taken.size()));
    DebugPrint("read\n");

    dup2(terminal, STDOUT_FILENO);
    const ssize_t size = read(ends[0], taken.data(), taken.size());
    EXPECT_EQ(taken.substr(0, static_cast<std::size_t>(size)), "read\n");
}
