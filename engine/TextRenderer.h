#pragma once

#include <SDL_ttf.h>

#include <string>

struct TextPosition
{
    double x;
    double y;
    double z;
};

/// Renders one line of Latin-1 text and draws it as a textured quad in the current matrices. Its top left
/// corner is at `position`, one pixel is one unit, y points down. Changes no enable state, so the caller
/// enables texturing and blending. A text that SDL_ttf cannot render is not drawn.
void drawTextQuad(const TTF_Font* font, const std::string& text, TextPosition position, SDL_Color colour);
