#include "GUIClient/SDLMain.h"

#include <gtest/gtest.h>

#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>

namespace {

// Starts the client, with room for so many more descriptors, and ends this process with its status.
[[noreturn]] void start(std::string argument, rlim_t descriptors = 100) noexcept
{
    dup2(STDERR_FILENO, STDOUT_FILENO);
    const rlim_t used = static_cast<rlim_t>(dup(STDERR_FILENO)) + 1;
    const rlimit limit = {used + descriptors, used + descriptors};
    setrlimit(RLIMIT_NOFILE, &limit);
    std::string program = "vantor";
    char* arguments[] = {program.data(), argument.data(), nullptr};
    const int status = SDL_main(2, arguments);
    std::raise(SIGPIPE);  // the client ignores both
    std::raise(SIGXFSZ);
    std::_Exit(status);
}

const testing::ExitedWithCode failed(EXIT_FAILURE);
const std::string report = "Could not connect to 127.0.0.1:1\nException: ";

}  // namespace

TEST(Start, WithoutDescriptorsOrThreadsFailsWithAMessage)
{
#ifndef __SANITIZE_ADDRESS__  // the sanitizers' check of virtual calls needs descriptors itself
    for (rlim_t descriptors = 0; descriptors <= 4; ++descriptors) {
        EXPECT_EXIT(start("--port=1", descriptors), failed, report + ".*: Too many open files")
            << descriptors;
    }
#endif
    EXPECT_EXIT(start("--port=1"), failed, report + "connect: Connection refused");
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, std::size_t{1} << 50U);  // more than any machine has
    pthread_setattr_default_np(&attributes);
    EXPECT_EXIT(start("--port=1"), failed, report + "boost::thread_resource_error");
}

TEST(Start, ABadCommandLineAbortsAtOnce)
{
    const testing::KilledBySignal aborted(SIGABRT);
    for (const char* argument : {"--udp-timeout=%value%", "--%original_token%"}) {
        EXPECT_EXIT(start(argument), aborted, "Malformed command line") << argument;
    }
    EXPECT_EXIT(start("--colour"), aborted, "unrecognised option '--colour'");
}
