#pragma once

#include <SDL_video.h>

#include <memory>

struct FreeSurface
{
    void operator()(SDL_Surface* surface) const { SDL_FreeSurface(surface); }
};

/// An SDL surface that its holder frees.
using SurfacePtr = std::unique_ptr<SDL_Surface, FreeSurface>;
