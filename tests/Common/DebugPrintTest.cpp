#include "Common/DebugPrint.h"
#include "Common/PrintableText.h"

#include <gtest/gtest.h>

#include <thread>

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
    EXPECT_EQ(printable("\xC3\x9F \xC2\xA9 \xE2\x80\xAE \xC2"), "\xC3\x9F \xC2\xA9 \xE2\x80\xAE \xC2");
}
