#include "Common/DebugPrint.h"

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <string_view>

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
    const std::string_view line(format);
    if (length >= static_cast<int>(sizeof text) && !line.empty() && line.back() == '\n') {
        text[sizeof text - 2] = '\n';
    }
    static std::mutex mutex;
    const std::lock_guard<std::mutex> lock(mutex);
    std::fputs(text, stdout);
    std::fflush(stdout);
}
