#include "Common/DebugPrint.h"

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>

namespace {

bool endsLine(const char* format)
{
    const std::size_t length = std::strlen(format);
    return length > 0 && format[length - 1] == '\n';
}

}  // namespace

void DebugPrint(const char* format, ...)
{
    char text[10000];
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    if (length < 0) {
        return;
    }
    if (static_cast<std::size_t>(length) >= sizeof text && endsLine(format)) {
        text[sizeof text - 2] = '\n';  // a cut line still ends
    }
    std::fputs(text, stdout);
    std::fflush(stdout);
}
