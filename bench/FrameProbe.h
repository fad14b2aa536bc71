#pragma once

#include <array>
#include <chrono>
#include <vector>

/// Where the time of the client's frames goes, without a change to the client: the linker puts our functions
/// in front of four of SDL's and OpenGL's (see CMakeLists.txt), and these mark where one step ends and the
/// next begins.
///
/// OpenGL draws on threads of its own: waiting for them to finish is a step of its own, before the swap.
namespace frame_probe {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

enum Step
{
    input,
    dispatch,
    update,
    drawing,
    finishing,
    swap,
    stepCount
};
constexpr const char* stepNames[stepCount] = {"input",        "dispatch of messages", "update of the scene",
                                              "OpenGL calls", "OpenGL finishing",     "swap"};

struct Frame
{
    Clock::time_point begin;
    std::array<Seconds, stepCount> steps;

    Seconds work() const;
};

/// Runs one drawGL() and notes it; aborts where one of its steps could not be told from the next.
void runFrame();
/// All frames so far.
const std::vector<Frame>& frames();

}  // namespace frame_probe
