#include "Common/DebugPrint.h"

#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <string_view>

namespace {

std::mutex outputMutex;

__attribute__((format(printf, 1, 0))) void print(const char* format, std::va_list arguments)
{
    char text[10000];
    const int length = std::vsnprintf(text, sizeof text, format, arguments);
    if (length < 0) {
        return;
    }
    const std::string_view line(format);
    if (length >= static_cast<int>(sizeof text) && !line.empty() && line.back() == '\n') {
        text[sizeof text - 2] = '\n';
    }
    const std::lock_guard<std::mutex> lock(outputMutex);
    std::fputs(text, stdout);
    std::fflush(stdout);
}

/// Counts the texts of the present second. Returns how many the second before left out, when a new second
/// begins, else 0. Sets `allowed` to whether the present text may be printed.
unsigned long countReceived(bool& allowed)
{
    using Clock = std::chrono::steady_clock;
    static std::mutex mutex;
    static Clock::time_point secondBegan;
    static unsigned long texts = 0;
    const std::lock_guard<std::mutex> lock(mutex);
    unsigned long leftOut = 0;
    if (Clock::now() - secondBegan >= std::chrono::seconds(1)) {
        secondBegan = Clock::now();
        leftOut = texts > mostReceivedTexts ? texts - mostReceivedTexts : 0;
        texts = 0;
    }
    allowed = ++texts <= mostReceivedTexts;
    return leftOut;
}

}  // namespace

void DebugPrint(const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    print(format, arguments);
    va_end(arguments);
}

void DebugPrintReceived(const char* format, ...)
{
    bool allowed = false;
    if (const unsigned long leftOut = countReceived(allowed)) {
        DebugPrint("%lu more messages about received data were left out\n", leftOut);
    }
    if (allowed) {
        std::va_list arguments;
        va_start(arguments, format);
        print(format, arguments);
        va_end(arguments);
    }
}
