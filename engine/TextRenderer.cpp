#include "engine/TextRenderer.h"

#include "engine/OpenGL.h"
#include "engine/SurfacePtr.h"

namespace {

unsigned int upload(const SDL_Surface& surface)
{
    unsigned int texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, surface.w, surface.h, 0, GL_BGRA, GL_UNSIGNED_BYTE,
                 surface.pixels);
    return texture;
}

void drawQuad(TextPosition at, double width, double height)
{
    glBegin(GL_QUADS);
    glTexCoord2d(0.0, 0.0);
    glVertex3d(at.x, at.y, at.z);
    glTexCoord2d(1.0, 0.0);
    glVertex3d(at.x + width, at.y, at.z);
    glTexCoord2d(1.0, 1.0);
    glVertex3d(at.x + width, at.y + height, at.z);
    glTexCoord2d(0.0, 1.0);
    glVertex3d(at.x, at.y + height, at.z);
    glEnd();
}

}  // namespace

void drawTextQuad(const TTF_Font* font, const std::string& text, TextPosition position, SDL_Color colour)
{
    // SDL_ttf wants a font that it may change, because it caches glyphs in it.
    const SurfacePtr surface(TTF_RenderText_Blended(const_cast<TTF_Font*>(font), text.c_str(), colour));
    if (!surface) {
        return;
    }
    const unsigned int texture = upload(*surface);
    drawQuad(position, surface->w, surface->h);
    glDeleteTextures(1, &texture);
}
