#include "Common/DebugPrint.h"
#include "Common/PrintableText.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <thread>

// Takes the place of the C library's in this program. Slow, and without a lock of its own: two texts at once
// mix.
extern "C" int fputs(const char* text, FILE* file)
{
    for (; *text != '\0'; ++text) {
        std::fputc(*text, file);
        std::this_thread::yield();
    }
    return 0;
}

TEST(DebugPrint, CutsLongTextsButKeepsTheLineEnd)
{
    const std::string name(60000, 'n');
    testing::internal::CaptureStdout();
    DebugPrint("%s scored %d of %.1f%%", "Rosa", -3, 12.5);
    DebugPrint("%s", name.c_str());
    DebugPrint("%s\n", name.c_str());
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Rosa scored -3 of 12.5%" + name.substr(0, 9999) + name.substr(0, 9998) + "\n");
}

TEST(DebugPrint, TextsOfTwoThreadsReachTheSystemUnmixed)
{
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const int terminal = dup(STDOUT_FILENO);
    dup2(ends[1], STDOUT_FILENO);
    const std::string a(9000, 'a'), b(9000, 'b');
    std::thread other([&] { DebugPrint("%s", a.c_str()); });
    DebugPrint("%s", b.c_str());
    other.join();
    dup2(terminal, STDOUT_FILENO);
    close(ends[1]);
    std::string bytes(20000, '?');
    bytes.resize(static_cast<std::size_t>(read(ends[0], bytes.data(), bytes.size())));
    EXPECT_TRUE(bytes == a + b || bytes == b + a);
}

TEST(DebugPrint, RationsTextsAboutReceivedData)
{
    testing::internal::CaptureStdout();
    std::string expected;
    for (unsigned long i = 0; i < mostReceivedTexts + 7; ++i) {
        DebugPrintReceived("%lu\n", i);
        expected += i < mostReceivedTexts ? std::to_string(i) + "\n" : "";
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1001));
    for (const char* text : {"late", "later"}) {
        DebugPrintReceived("%s\n", text);
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              expected + "7 more messages about received data were left out\nlate\nlater\n");
}

TEST(Printable, ReplacesControlCharactersOnly)
{
    EXPECT_EQ(printable("a\x1B[2J\n\t\x7F \xC2\x9B"), "a?[2J??? ??");
    EXPECT_EQ(printable(std::string("\0~", 2)), "?~");
    EXPECT_EQ(printable("\xC3\x9F \xC2\xA9 \xC2"), "\xC3\x9F \xC2\xA9 \xC2") << "letters keep their bytes";
}
