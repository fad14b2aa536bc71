#pragma once

#include <SDL_video.h>

#include <memory>

struct FreeSurface
{
    void operator()(SDL_Surface* surface) const { SDL_FreeSurface(surface); }
};

/// An SDL surface that is ours to free.
using SurfacePtr = std::unique_ptr<SDL_Surface, FreeSurface>;
