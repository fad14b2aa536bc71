#pragma once

#include "peer/Waiting.h"

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace support {

using peer::Clock;
using peer::eventually;
using namespace std::chrono_literals;

/// A child process. It is killed when this object goes, or when the thread that made it ends.
class Process
{
public:
    /// The program is looked up in PATH. Standard output and error go to the descriptor, or are kept (-1).
    explicit Process(std::vector<std::string> command, int output = -1)
        : kept(memfd_create("output", MFD_CLOEXEC))
    {
        std::vector<char*> words;
        for (std::string& word : command) {
            words.push_back(word.data());
        }
        words.push_back(nullptr);
        pid = fork();
        if (pid < 0) {
            throw std::runtime_error("cannot fork for " + command.front());
        }
        if (pid == 0) {  // the child of a program with threads must neither allocate nor lock
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            dup2(output < 0 ? kept : output, STDOUT_FILENO);
            dup2(STDOUT_FILENO, STDERR_FILENO);
            execvp(words[0], words.data());
            _exit(127);
        }
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    ~Process()
    {
        if (isRunning()) {
            kill(pid, SIGKILL);
            waitpid(pid, &waitStatus, 0);
        }
        close(kept);
    }

    /// "status N" or "signal N"; "still running" if the child has not ended in time.
    std::string end(Clock::duration timeout = 20s)
    {
        const auto hasEnded = [this] { return ended = ended || waitpid(pid, &waitStatus, WNOHANG) == pid; };
        if (!eventually(hasEnded, timeout)) {
            return "still running";
        }
        return WIFSIGNALED(waitStatus) ? "signal " + std::to_string(WTERMSIG(waitStatus))
                                       : "status " + std::to_string(WEXITSTATUS(waitStatus));
    }

    bool isRunning() { return end(0s) == "still running"; }
    void signal(int number) const { kill(pid, number); }

    /// All that was printed and kept so far.
    std::string output() const
    {
        // opened anew: a seek would move the place where the child writes
        std::ifstream file("/proc/self/fd/" + std::to_string(kept));
        return {std::istreambuf_iterator<char>(file), {}};
    }

    bool hasPrinted(const std::string& text) const { return output().find(text) != std::string::npos; }

private:
    int kept;  ///< a file without a name
    pid_t pid;
    bool ended = false;
    int waitStatus = 0;
};

/// Runs a tool to its end; throws unless that is status 0. A test without its tools fails, it does not skip.
inline std::string outputOf(const std::vector<std::string>& command)
{
    Process process(command);
    const std::string end = process.end();
    if (end != "status 0") {
        throw std::runtime_error(command.front() + ": " + end + "\n" + process.output());
    }
    return process.output();
}

/// The command that runs the real client on a display (none where it is empty).
inline std::vector<std::string> clientCommand(const std::string& display,
                                              const std::vector<std::string>& arguments)
{
    // A sanitized client looks for no leaks: its singletons live for ever on purpose.
    const std::string environment =
        "env -u WAYLAND_DISPLAY SDL_VIDEODRIVER=x11 SDL_AUDIODRIVER=dummy "
        "LIBGL_ALWAYS_SOFTWARE=1 ASAN_OPTIONS=detect_leaks=0 DISPLAY=" +
        display;
    std::vector<std::string> command = {"sh", "-c", "exec " + environment + " \"$0\" \"$@\"", VANTOR_CLIENT};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return command;
}

}  // namespace support
