#pragma once

#include "peer/Waiting.h"

#include <sys/types.h>

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
    explicit Process(std::vector<std::string> command, int output = -1);
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    ~Process();

    /// "status N" or "signal N"; "still running" if the child has not ended in time.
    std::string end(Clock::duration timeout = 20s);
    bool isRunning() { return end(0s) == "still running"; }
    void signal(int number) const;

    /// All that was printed and kept so far.
    std::string output() const;
    bool hasPrinted(const std::string& text) const { return output().find(text) != std::string::npos; }

private:
    int kept;  ///< a file without a name
    pid_t pid;
    bool ended = false;
    int waitStatus = 0;
};

/// Runs a tool to its end; throws unless that is status 0. A test without its tools fails, it does not skip.
std::string outputOf(const std::vector<std::string>& command);

/// The command that runs the real client on a display (none where it is empty).
std::vector<std::string> clientCommand(const std::string& display, const std::vector<std::string>& arguments);

}  // namespace support
