#pragma once

#include "tests/support/Process.h"

#include <memory>
#include <string>
#include <vector>

namespace support {

/// The real client, as a child process; what it prints goes to a file.
class ClientProcess
{
public:
    struct Options
    {
        std::vector<std::string> arguments;
        std::string display;               ///< empty: none
        int output = -1;                   ///< takes the file's place
        std::vector<std::string> wrapper;  ///< a command in front of the client's, which runs it
    };

    explicit ClientProcess(const Options& options);

    std::string end(Clock::duration timeout = 20s) { return process->end(timeout); }
    bool isRunning() { return process->isRunning(); }
    void signal(int number) const { process->signal(number); }

    /// Everything printed so far, standard output and error together.
    std::string output() const;
    bool hasPrinted(const std::string& text) const { return output().find(text) != std::string::npos; }

private:
    Descriptor file;
    std::unique_ptr<Process> process;
};

}  // namespace support
