#pragma once

#include <SDL_ttf.h>

#include <string>

struct TextPosition
{
    double x;
    double y;
    double z;
};

/// Renders one line of Latin-1 text and draws it as a textured quad in the current matrices, its top left
/// corner at `position`, one pixel to a unit, y downwards. Changes no enable state: the caller has texturing
/// and blending on. A text that SDL_ttf cannot render is not drawn.
void drawTextQuad(const TTF_Font* font, const std::string& text, TextPosition position, SDL_Color colour);
