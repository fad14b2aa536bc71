#pragma once

#include <SDL_events.h>
#include <SDL_video.h>

#include <deque>
#include <string>
#include <utility>

/// Stands in for OpenGL, GLU, SDL, SDL_image and SDL_ttf: a test program that links it calls these functions
/// instead. It records every call in order, and answers as the fields below say.
struct GLRecorder
{
    /// From now on loading images, windows, fonts and texts succeeds: each is a surface without pixels.
    void deliver(int bytesPerPixel, unsigned int redMask, int width, int height);
    SDL_Surface* delivered() { return surface.format == nullptr ? nullptr : &surface; }
    /// Takes the recorded calls that match the regular expression and forgets the others. One call a line:
    /// the name, its numbers to six digits, its text. Numbers behind a pointer are included; other pointers
    /// are not.
    std::string take(const std::string& pattern = "");

    std::string calls;
    unsigned int nextName = 1;                 ///< of a texture or a display list
    std::deque<std::pair<Uint8, int>> events;  ///< types, with symbols of keys
    int mouseX = 400, mouseY = 300;
    Uint8 mouseButtons = 0;
    int sdlInitResult = 0;
    SDL_PixelFormat format = {};
    SDL_Surface surface = {};
};

extern GLRecorder glRecorder;

/// Calls in the form of take(), from a file below tests/. Behind a number and a colon stands its name.
std::string golden(const std::string& file);
