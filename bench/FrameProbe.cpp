#include "bench/FrameProbe.h"

#include "GUIClient/drawGL.h"
#include "engine/OpenGL.h"

#include <SDL.h>

#include <cstdio>
#include <cstdlib>
#include <numeric>

namespace frame_probe {

namespace {

std::vector<Frame> allFrames;
Step running = stepCount;  // none
Clock::time_point lastMark;

// Ends the step if it is the one that runs; later calls of the same function in a frame mean nothing.
void endOf(Step step)
{
    if (running == step) {
        const Clock::time_point now = Clock::now();
        allFrames.back().steps[step] = now - lastMark;
        lastMark = now;
        running = static_cast<Step>(step + 1);
    }
}

}  // namespace

Seconds Frame::work() const
{
    return std::accumulate(steps.begin(), steps.end(), Seconds::zero());
}

void runFrame()
{
    lastMark = Clock::now();
    allFrames.push_back({lastMark, {}});
    running = input;
    drawGL();
    if (running != stepCount) {
        std::fprintf(stderr, "frame_probe: the step \"%s\" had no end\n", stepNames[running]);
        std::abort();
    }
}

const std::vector<Frame>& frames()
{
    return allFrames;
}

}  // namespace frame_probe

// The names are the linker's: __wrap_f stands in the place of f, and __real_f is f itself.
extern "C" {

int __real_SDL_PollEvent(SDL_Event* event);
Uint8 __real_SDL_GetMouseState(int* x, int* y);
void __real_glClear(GLbitfield mask);
void __real_SDL_GL_SwapBuffers();

int __wrap_SDL_PollEvent(SDL_Event* event)
{
    const int found = __real_SDL_PollEvent(event);
    if (found == 0) {
        frame_probe::endOf(frame_probe::input);
    }
    return found;
}

Uint8 __wrap_SDL_GetMouseState(int* x, int* y)
{
    frame_probe::endOf(frame_probe::dispatch);
    return __real_SDL_GetMouseState(x, y);
}

void __wrap_glClear(GLbitfield mask)
{
    frame_probe::endOf(frame_probe::update);
    __real_glClear(mask);
}

void __wrap_SDL_GL_SwapBuffers()
{
    frame_probe::endOf(frame_probe::drawing);
    glFinish();
    frame_probe::endOf(frame_probe::finishing);
    __real_SDL_GL_SwapBuffers();
    frame_probe::endOf(frame_probe::swap);
}
}
