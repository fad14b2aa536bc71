#include "Common/DebugPrint.h"

#include <poll.h>

#include <algorithm>
#include <climits>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>

namespace {

constexpr int patience = 1000;  // milliseconds

bool endsLine(const char* format)
{
    const std::size_t length = std::strlen(format);
    return length > 0 && format[length - 1] == '\n';
}

// Whether standard output takes more: of a pipe, PIPE_BUF bytes without blocking. A signal that breaks the
// wait off counts as a no, since blocking with the lock held would stop every thread that prints. Called with
// the lock held.
bool someoneReads()
{
    static bool stuck = false;
    pollfd output = {fileno(stdout), POLLOUT, 0};
    stuck = output.fd >= 0 && poll(&output, 1, stuck ? 0 : patience) <= 0;
    return !stuck;
}

void write(const char* text, std::size_t length)
{
    flockfile(stdout);
    while (length > 0 && someoneReads()) {
        const std::size_t piece = std::min<std::size_t>(length, PIPE_BUF);
        std::fwrite(text, 1, piece, stdout);
        std::fflush(stdout);
        text += piece;
        length -= piece;
    }
    funlockfile(stdout);
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
        text[sizeof text - 2] = '\n';
    }
    write(text, std::min(static_cast<std::size_t>(length), sizeof text - 1));
}
