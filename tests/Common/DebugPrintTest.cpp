#include "Common/DebugPrint.h"

#include <gtest/gtest.h>

#include <string>

TEST(DebugPrint, FormatsLikePrintfAndAddsNothing)
{
    testing::internal::CaptureStdout();
    DebugPrint("%s scored %d of %.1f%%", "Rosa", -3, 12.5);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Rosa scored -3 of 12.5%");
}

TEST(DebugPrint, CutsATextThatIsTooLong)
{
    const std::string name(60000, 'n');
    testing::internal::CaptureStdout();
    DebugPrint("%s", name.c_str());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), std::string(9999, 'n'));
}
