#pragma once

#include <SDL_events.h>
#include <SDL_video.h>

#include <deque>
#include <string>

/// Stands in for OpenGL, GLU, SDL, SDL_image and SDL_ttf: a test executable that links it has their functions
/// from here. It writes down every call in order, and answers as the fields below say.
struct GLRecorder
{
    /// From now on images, windows, fonts and rendered texts can be had: a surface without pixels.
    void deliver(int bytesPerPixel, unsigned int redMask, int width, int height);
    SDL_Surface* delivered() { return surface.format == nullptr ? nullptr : &surface; }
    /// Queues an event for SDL_PollEvent.
    void send(Uint8 type, SDLKey symbol = SDLK_UNKNOWN);
    /// Those of the calls since the last take() that match the regular expression, one a line: the name, its
    /// numbers to six digits, its text. A pointer to numbers is written as the numbers; other pointers are
    /// left out.
    std::string take(const std::string& pattern = "");

    std::string calls;
    unsigned int nextName = 1;  ///< of a texture or a display list
    std::deque<SDL_Event> events;
    int mouseX = 400, mouseY = 300;
    Uint8 mouseButtons = 0;
    int sdlInitResult = 0;
    SDL_PixelFormat format = {};
    SDL_Surface surface = {};
};

extern GLRecorder glRecorder;

/// The calls as take() tells them, from a text with a semicolon between two and OpenGL's names for its
/// numbers.
std::string script(std::string text);
