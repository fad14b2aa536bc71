#include "engine/TextureLoader.h"

#include "Common/DebugPrint.h"
#include "engine/OpenGL.h"
#include "engine/SurfacePtr.h"

#include <SDL_image.h>

#include <cstdlib>

namespace {

GLenum pixelFormatOf(const SDL_PixelFormat& format)
{
    const bool redFirst = format.Rmask == 0x000000FF;
    switch (format.BytesPerPixel) {
        case 3:
            return redFirst ? GL_RGB : GL_BGR;
        case 4:
            return redFirst ? GL_RGBA : GL_BGRA;
        default:
            std::exit(-1);
    }
}

unsigned int upload(const SDL_Surface& surface)
{
    const GLenum format = pixelFormatOf(*surface.format);
    unsigned int texture = 0;
    glPushMatrix();
    glEnable(GL_TEXTURE_2D);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    gluBuild2DMipmaps(GL_TEXTURE_2D, surface.format->BytesPerPixel, surface.w, surface.h, format,
                      GL_UNSIGNED_BYTE, surface.pixels);
    glPopMatrix();
    return texture;
}

}  // namespace

unsigned int loadTextureFile(const std::string& path)
{
    DebugPrint("Loading: %s\n", path.c_str());
    const SurfacePtr surface(IMG_Load(path.c_str()));
    if (!surface) {
        DebugPrint("Error could not load file %s\n", path.c_str());
        return 0;
    }
    return upload(*surface);
}
