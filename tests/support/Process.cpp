#include "tests/support/Process.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace support {

namespace {

constexpr int extraNumber = 3;  // where a child finds its extra descriptor

std::string nameOf(const std::string& setting)
{
    return setting.substr(0, setting.find('='));
}

std::vector<std::string> environmentWith(const std::vector<std::string>& changes)
{
    std::vector<std::string> result;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string name = nameOf(*entry);
        if (std::none_of(changes.begin(), changes.end(), [&](const auto& c) { return nameOf(c) == name; })) {
            result.emplace_back(*entry);
        }
    }
    std::copy_if(changes.begin(), changes.end(), std::back_inserter(result),
                 [](const std::string& change) { return change.find('=') != std::string::npos; });
    return result;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

// Between fork and exec of a program with threads only system calls are safe: no allocation, no locks.
[[noreturn]] void becomeChild(const Launch& launch, char** arguments, char** environment)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    constexpr rlimit noCoreFile = {0, 0};
    setrlimit(RLIMIT_CORE, &noCoreFile);
    if (launch.output >= 0) {
        dup2(launch.output, STDOUT_FILENO);
        dup2(launch.output, STDERR_FILENO);
    }
    if (launch.extraDescriptor == extraNumber) {
        fcntl(extraNumber, F_SETFD, 0);
    } else if (launch.extraDescriptor >= 0) {
        dup2(launch.extraDescriptor, extraNumber);
    }
    execvpe(arguments[0], arguments, environment);
    _exit(127);
}

pid_t start(const Launch& launch)
{
    std::vector<std::string> command = launch.command;
    std::vector<std::string> environment = environmentWith(launch.environment);
    const std::vector<char*> arguments = pointersTo(command);
    const std::vector<char*> settings = pointersTo(environment);
    const pid_t child = fork();
    if (child < 0) {
        throw std::runtime_error("cannot fork for " + command.front());
    }
    if (child == 0) {
        becomeChild(launch, const_cast<char**>(arguments.data()), const_cast<char**>(settings.data()));
    }
    return child;
}

}  // namespace

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept
{
    close();
    fd = other.release();
    return *this;
}

int Descriptor::release()
{
    return std::exchange(fd, -1);
}

void Descriptor::close()
{
    if (fd >= 0) {
        ::close(release());
    }
}

Pipe::Pipe()
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        throw std::runtime_error("cannot make a pipe");
    }
    readEnd = Descriptor(ends[0]);
    writeEnd = Descriptor(ends[1]);
}

Process::Process(const Launch& launch) : pid(start(launch)) {}

Process::~Process()
{
    if (!reap()) {
        kill(pid, SIGKILL);
        waitpid(pid, &waitStatus, 0);
    }
}

bool Process::reap()
{
    if (!ended) {
        ended = waitpid(pid, &waitStatus, WNOHANG) == pid;
    }
    return ended;
}

std::string Process::end(Clock::duration timeout)
{
    if (!eventually([this] { return reap(); }, timeout)) {
        return "still running";
    }
    return WIFSIGNALED(waitStatus) ? "signal " + std::to_string(WTERMSIG(waitStatus))
                                   : "status " + std::to_string(WEXITSTATUS(waitStatus));
}

void Process::signal(int number) const
{
    kill(pid, number);
}

void requireProgram(const std::string& program, const std::string& debianPackage)
{
    const char* path = std::getenv("PATH");
    std::istringstream folders(path == nullptr ? "/usr/bin" : path);
    for (std::string folder; std::getline(folders, folder, ':');) {
        if (access((std::filesystem::path(folder) / program).c_str(), X_OK) == 0) {
            return;
        }
    }
    throw std::runtime_error("no " + program + ": install " + debianPackage);
}

void run(const Launch& launch)
{
    const std::string end = Process(launch).end();
    if (end != "status 0") {
        throw std::runtime_error(launch.command.front() + ": " + end);
    }
}

}  // namespace support
