#include "GUIClient/SDLMain.h"

#include <gtest/gtest.h>

#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <string>

// Starts the client, with room for so many more descriptors, and ends this process with its status.
[[noreturn]] static void start(std::string argument, rlim_t descriptors = 100) noexcept
{
    dup2(STDERR_FILENO, STDOUT_FILENO);
    const rlim_t room = static_cast<rlim_t>(dup(STDERR_FILENO)) + 1 + descriptors;
    const rlimit limit = {room, room};
    setrlimit(RLIMIT_NOFILE, &limit);
    std::string program = "vantor";
    char* arguments[] = {program.data(), argument.data(), nullptr};
    const int status = SDL_main(2, arguments);
    std::raise(SIGPIPE);  // the client ignores both
    std::raise(SIGXFSZ);
    std::_Exit(status);
}

TEST(Start, WithoutDescriptorsOrThreadsFailsWithAMessage)
{
    const testing::ExitedWithCode failed(EXIT_FAILURE);
    const std::string report = "Could not connect to 127.0.0.1:1\nException: ";
#ifndef VANTOR_UNDEFINED_SANITIZER  // its check of virtual calls needs descriptors
    for (rlim_t descriptors = 0; descriptors <= 4; ++descriptors) {
        EXPECT_EXIT(start("--port=1", descriptors), failed, report + ".*: Too many open files");
    }
#endif
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, std::size_t{1} << 50U);  // more than any machine has
    pthread_setattr_default_np(&attributes);
    EXPECT_EXIT(start("--port=1"), failed, report + "boost::thread_resource_error");
}

TEST(Start, ABadCommandLineAbortsAtOnce)
{
    const testing::KilledBySignal aborted(SIGABRT);
    EXPECT_EXIT(start("--udp-timeout=%value%"), aborted, "Malformed command line");
    EXPECT_EXIT(start("--%original_token%"), aborted, "Malformed command line");
    EXPECT_EXIT(start("--colour"), aborted, "unrecognised option '--colour'");
}
