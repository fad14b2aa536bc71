#include "service/LegacyCommandLine.h"

#include <gtest/gtest.h>

#include <stdexcept>

using commandline::decimal;

TEST(CommandLineNumber, IsPlainDigitsWithAPointAndNoLargerThanAllowed)
{
    EXPECT_EQ(decimal("loss", "0", 100), 0);
    EXPECT_EQ(decimal("loss", "12.25", 100), 12.25);
    EXPECT_EQ(decimal("loss", "100", 100), 100);
    for (const char* text : {"", ".", " 1", "1 ", "-1", "+1", "1e3", "0x1", "1,5", "1.2.3", "nan", "100.1"}) {
        EXPECT_THROW(decimal("loss", text, 100), std::invalid_argument) << text;
    }
}
