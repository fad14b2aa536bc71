#include "Common/PrintableText.h"

#include <algorithm>

std::string printable(std::string text)
{
    constexpr unsigned char del = 0x7F;
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < ' ' || c == del; }, '?');
    return text;
}
