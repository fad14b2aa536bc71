// A library to preload: faults of the machine.
//
//     VANTOR_FAULT="CALL N ERROR [TIMES]"   TIMES calls fail (1), from the N-th on
//
// CALL is a function below, `new`, or `any`: those marked true below, counted together. ERROR is
//
//     EINTR, EAGAIN...   the call fails with it
//     short              it reads or writes half as many bytes
//     stall              it waits for five seconds first
//     fail               the failure of a call that sets no errno
//     clock              for gettimeofday: it jumps once a second, by up to a day in either direction
//
// Only programs whose name begins with "vantor" are affected, and only calls from their own code, from main
// on. That includes Asio, whose code is in headers. A fault that strikes writes a line to standard error.
#include <dlfcn.h>
#include <link.h>
#include <netdb.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <new>

namespace {

// The plan, read before main.
char plannedCall[32] = "";
char plannedError[32] = "";
long first = 0;
long times = 1;
int errorNumber = 0;
std::atomic<long> calls = 0;
std::atomic<bool> isInMain = false;
std::uintptr_t programBegin = 0;
std::uintptr_t programEnd = 0;
constexpr time_t clockErrors[] = {60, -60, 3600, -3600, 86400, -86400, 0};  // seconds

int findProgram(dl_phdr_info* info, std::size_t /*size*/, void* /*unused*/)
{
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const ElfW(Phdr)& segment = info->dlpi_phdr[i];
        if (segment.p_type == PT_LOAD) {
            const std::uintptr_t begin = info->dlpi_addr + segment.p_vaddr;
            programBegin = programBegin == 0 ? begin : programBegin;
            programEnd = begin + segment.p_memsz;
        }
    }
    return 1;  // the program comes first
}

__attribute__((constructor)) void readPlan()
{
    if (std::strncmp(program_invocation_short_name, "vantor", 6) != 0) {
        return;
    }
    dl_iterate_phdr(findProgram, nullptr);
    if (const char* const fault = std::getenv("VANTOR_FAULT")) {
        char* rest = nullptr;
        std::sscanf(fault, "%31s", plannedCall);
        first = std::strtol(fault + std::strlen(plannedCall), &rest, 10);
        if (std::sscanf(rest, "%31s", plannedError) == 1) {
            times = std::strtol(std::strstr(rest, plannedError) + std::strlen(plannedError), nullptr, 10);
            times = times == 0 ? 1 : times;
        }
        for (int number = 1; number < 200; ++number) {
            const char* const name = strerrorname_np(number);
            errorNumber = name != nullptr && std::strcmp(plannedError, name) == 0 ? number : errorNumber;
        }
    }
}

bool isOurs(const void* caller)
{
    const auto address = reinterpret_cast<std::uintptr_t>(caller);
    return address >= programBegin && address < programEnd;
}

bool strikes(const char* call, const void* caller, bool isOfSystem = true)
{
    const bool isPlanned =
        std::strcmp(call, plannedCall) == 0 || (isOfSystem && std::strcmp(plannedCall, "any") == 0);
    if (!isPlanned || !isInMain || !isOurs(caller)) {
        return false;
    }
    const long number = ++calls;
    if (number < first || number >= first + times) {
        return false;
    }
    if (number == first) {
        char line[120];
        const int length =
            std::snprintf(line, sizeof line, "injected: %s %ld %s\n", call, number, plannedError);
        syscall(SYS_write, STDERR_FILENO, line, length);
    }
    if (std::strcmp(plannedError, "stall") == 0) {
        timespec rest = {5, 0};
        while (nanosleep(&rest, &rest) != 0) {
        }
    }
    return true;
}

using Main = int (*)(int, char**, char**);
Main programMain;

int countingMain(int count, char** arguments, char** environment)
{
    isInMain = true;
    return programMain(count, arguments, environment);
}

using Function = long (*)(long, long, long, long, long, long);

// All arguments are integers or pointers: the same registers, whatever their number. `size` is halved if the
// fault is a short transfer.
long call(Function next, bool struck, long failure, long a, long b, long c, long d, long e, long f)
{
    if (struck && std::strcmp(plannedError, "short") == 0) {
        return next(a, b, (c + 1) / 2, d, e, f);
    }
    if (struck && std::strcmp(plannedError, "stall") != 0) {
        errno = errorNumber;
        return failure;
    }
    return next(a, b, c, d, e, f);
}

}  // namespace

// Defines the function under its own name, without a clash with the declaration in a header.
#define INTERPOSE(name, isOfSystem, failure)                                                               \
    extern "C" long faulty_##name(long, long, long, long, long, long) __asm__(#name);                      \
    extern "C" long faulty_##name(long a, long b, long c, long d, long e, long f)                          \
    {                                                                                                      \
        static const auto next = reinterpret_cast<Function>(dlsym(RTLD_NEXT, #name));                      \
        return call(next, strikes(#name, __builtin_return_address(0), isOfSystem), failure, a, b, c, d, e, \
                    f);                                                                                    \
    }

INTERPOSE(socket, true, -1)
INTERPOSE(bind, true, -1)
INTERPOSE(listen, true, -1)
INTERPOSE(accept, true, -1)
INTERPOSE(connect, true, -1)
INTERPOSE(getsockname, true, -1)
INTERPOSE(getpeername, true, -1)
INTERPOSE(getsockopt, true, -1)
INTERPOSE(setsockopt, true, -1)
INTERPOSE(shutdown, true, -1)
INTERPOSE(ioctl, true, -1)
INTERPOSE(pipe, true, -1)
INTERPOSE(poll, true, -1)
INTERPOSE(epoll_create1, true, -1)
INTERPOSE(epoll_wait, true, -1)
INTERPOSE(eventfd, true, -1)
INTERPOSE(timerfd_create, true, -1)
INTERPOSE(timerfd_settime, false, -1)  // fails for wrong arguments only; Asio does not report it
INTERPOSE(recv, true, -1)
INTERPOSE(recvfrom, true, -1)
INTERPOSE(send, true, -1)
INTERPOSE(sendto, true, -1)
INTERPOSE(read, true, -1)
INTERPOSE(write, true, -1)
INTERPOSE(epoll_ctl, false, -1)  // Asio does not report it for its own pipe of signals: SIGTERM is lost
INTERPOSE(getaddrinfo, false, EAI_MEMORY)
INTERPOSE(fopen, true, 0)
INTERPOSE(glGenLists, false, 0)
INTERPOSE(glGenTextures, false, 0)  // leaves the names as they were

// What runs before main cannot be caught: nothing is counted there.
extern "C" int counting_start(Main, int, char**, void*, void*, void*, void*) __asm__("__libc_start_main");
extern "C" int counting_start(Main main, int count, char** arguments, void* a, void* b, void* c, void* d)
{
    static const auto next =
        reinterpret_cast<decltype(&counting_start)>(dlsym(RTLD_NEXT, "__libc_start_main"));
    programMain = main;
    return next(countingMain, count, arguments, a, b, c, d);
}

extern "C" void* faulty_new(std::size_t size) __asm__("_Znwm");
extern "C" void* faulty_new(std::size_t size)
{
    static const auto next = reinterpret_cast<void* (*)(std::size_t)>(dlsym(RTLD_NEXT, "_Znwm"));
    if (strikes("new", __builtin_return_address(0), false)) {
        throw std::bad_alloc();
    }
    return next(size);
}

extern "C" int shifted_gettimeofday(timeval* time, void* zone) __asm__("gettimeofday");
extern "C" int shifted_gettimeofday(timeval* time, void* zone)
{
    static const auto next = reinterpret_cast<int (*)(timeval*, void*)>(dlsym(RTLD_NEXT, "gettimeofday"));
    const int result = next(time, zone);
    if (strikes("gettimeofday", __builtin_return_address(0), false)) {
        time->tv_sec += clockErrors[time->tv_sec % 7];
    }
    return result;
}
