#include "Common/CommandLine.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

using commandline::decimal;

TEST(CommandLineNumber, IsPlainDigitsWithAPointAndNoLargerThanAllowed)
{
    EXPECT_EQ(decimal("loss", "0", 100), 0);
    EXPECT_EQ(decimal("loss", "12.25", 100), 12.25);
    EXPECT_EQ(decimal("loss", ".5", 100), 0.5);
    EXPECT_EQ(decimal("loss", "100", 100), 100);
    const std::vector<std::string> refused = {
        "",    ".",   " 1",    "1 ",  "1x",  "-1",    "+1",       "1e3",
        "0x1", "1,5", "1.2.3", "inf", "nan", "100.1", {"1\0", 2}, std::string(400, '9')};
    for (const std::string& text : refused) {
        EXPECT_THROW(decimal("loss", text, 100), std::invalid_argument) << text;
    }
}
