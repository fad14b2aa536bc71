#pragma once

#include <SDL_events.h>
#include <SDL_video.h>
#include <gtest/gtest.h>

#include <deque>
#include <map>
#include <ostream>
#include <string>
#include <vector>

/// One recorded call. A pointer to numbers is recorded as the numbers; other pointers are left out.
struct Call
{
    std::string name;
    std::vector<double> values;
    std::string text;
};

/// Numbers are equal within single precision.
bool operator==(const Call& a, const Call& b);
inline bool operator!=(const Call& a, const Call& b)
{
    return !(a == b);
}
std::ostream& operator<<(std::ostream& out, const Call& call);

using TTF_Font = struct _TTF_Font;
using Calls = std::vector<Call>;

template <class... Values>
Call call(const char* name, Values... values)
{
    return {name, {static_cast<double>(values)...}, ""};
}

/// An image as a loader would deliver it: sizes and format, no pixels.
struct FakeImage
{
    FakeImage(int bytesPerPixel, unsigned int redMask, int width, int height);
    FakeImage(const FakeImage&) = delete;
    FakeImage& operator=(const FakeImage&) = delete;

    SDL_PixelFormat format = {};
    SDL_Surface surface = {};
};

/// Stands in for OpenGL, GLU, SDL, SDL_image and SDL_ttf: a test executable that links it has their functions
/// from here. It writes down every call in order, and answers as the fields below say.
class GLRecorder
{
public:
    void reset();
    void record(Call made) { calls.push_back(std::move(made)); }
    /// All calls since the last take() or reset().
    Calls take();
    /// The calls of one name since then, without taking them.
    Calls named(const std::string& name) const;

    Calls calls;
    unsigned int nextName = 1;  ///< of a texture or a display list

    std::deque<SDL_Event> events;  ///< what SDL_PollEvent delivers
    int mouseX = 400;
    int mouseY = 300;
    Uint8 mouseButtons = 0;
    int sdlInitResult = 0;
    FakeImage* screen = nullptr;               ///< null: there is no such video mode
    std::map<std::string, FakeImage*> images;  ///< by file name without its folder; others fail to load
    TTF_Font* font = nullptr;                  ///< null: no font opens
    FakeImage* renderedText = nullptr;         ///< null: SDL_ttf cannot render it
};

extern GLRecorder glRecorder;

/// Takes the recorded calls and compares them with the script; tells the first that differs. A script names
/// each call, its numbers (or OpenGL's names for them) and its "text", with a semicolon between two calls.
testing::AssertionResult recordedExactly(const std::string& script);

/// A key event as SDL delivers it.
SDL_Event keyEvent(Uint8 type, SDLKey symbol);
