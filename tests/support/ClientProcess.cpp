#include "tests/support/ClientProcess.h"

#include <sys/mman.h>
#include <unistd.h>

#include <array>

namespace support {

namespace {

// The sanitizers' settings mean something only where the client was built with them. Its singletons live for
// ever on purpose, so leaks are not looked for.
std::vector<std::string> environmentFor(const std::string& display)
{
    return {display.empty() ? "DISPLAY" : "DISPLAY=" + display,
            "WAYLAND_DISPLAY",
            "SDL_VIDEODRIVER=x11",
            "SDL_AUDIODRIVER=dummy",
            "LIBGL_ALWAYS_SOFTWARE=1",
            "ASAN_OPTIONS=detect_leaks=0",
            "UBSAN_OPTIONS=print_stacktrace=1"};
}

}  // namespace

ClientProcess::ClientProcess(const Options& options) : file(memfd_create("client output", MFD_CLOEXEC))
{
    Launch launch;
    launch.command = options.wrapper;
    launch.command.emplace_back(VANTOR_CLIENT);
    launch.command.insert(launch.command.end(), options.arguments.begin(), options.arguments.end());
    launch.environment = environmentFor(options.display);
    launch.output = options.output >= 0 ? options.output : file.get();
    process = std::make_unique<Process>(launch);
}

std::string ClientProcess::output() const
{
    std::string text;
    std::array<char, 65536> piece{};
    for (ssize_t n = 0;
         (n = pread(file.get(), piece.data(), piece.size(), static_cast<off_t>(text.size()))) > 0;) {
        text.append(piece.data(), static_cast<std::size_t>(n));
    }
    return text;
}

}  // namespace support
