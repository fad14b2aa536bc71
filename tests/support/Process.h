#pragma once

#include "tests/support/Waiting.h"

#include <sys/types.h>

#include <string>
#include <vector>

namespace support {

/// An owned file descriptor, closed on exec.
class Descriptor
{
public:
    explicit Descriptor(int newFd = -1) : fd(newFd) {}
    Descriptor(Descriptor&& other) noexcept : fd(other.release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept;
    ~Descriptor() { close(); }

    int get() const { return fd; }
    int release();
    void close();

private:
    int fd;
};

struct Pipe
{
    Pipe();
    Descriptor readEnd, writeEnd;
};

/// What a child is started with. Names are looked up in PATH.
struct Launch
{
    std::vector<std::string> command;
    std::vector<std::string>
        environment;           ///< NAME=value is set, NAME alone is removed; the rest is inherited
    int output = -1;           ///< standard output and error go here; -1: inherited
    int extraDescriptor = -1;  ///< arrives as descriptor 3; -1: none
};

/// A child process. It is killed, by its pid, when this object goes, and also when the thread that made it
/// ends.
class Process
{
public:
    explicit Process(const Launch& launch);
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    ~Process();

    /// How the child ended: "status N" or "signal N"; "still running" when it has not within the time.
    std::string end(Clock::duration timeout = 20s);
    bool isRunning() { return end(0s) == "still running"; }
    void signal(int number) const;

private:
    bool reap();

    pid_t pid;
    bool ended = false;
    int waitStatus = 0;
};

/// Throws "no X: install Y" where the program is not in PATH: a test without its tools fails, it does not
/// skip.
void requireProgram(const std::string& program, const std::string& debianPackage);

/// Runs a tool to its end; throws unless it ends with status 0.
void run(const Launch& launch);

}  // namespace support
