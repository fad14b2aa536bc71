// Loads an image or a model, as the client does, without a window. OpenGL without a window does nothing.
#include "engine/ModelLoader.h"
#include "engine/OpenGL.h"
#include "engine/SurfacePtr.h"
#include "engine/TextureLoader.h"
#include "fuzz/FuzzInput.h"

#include <SDL_image.h>

#include <cstring>

/// The importer of OBJ files leaks the parts of some models that it refuses.
extern "C" const char* __lsan_default_suppressions()  // NOLINT(bugprone-reserved-identifier)
{
    return "leak:libassimp";
}

/// Replaces GLU's function, which needs a window. Reads the whole image, so that the sanitizer finds a short
/// one. Rows begin at multiples of four bytes.
extern "C" GLint gluBuild2DMipmaps(GLenum, GLint bytesPerPixel, GLsizei width, GLsizei height, GLenum, GLenum,
                                   const void* pixels)
{
    const std::ptrdiff_t rowSize = (std::ptrdiff_t{width} * bytesPerPixel + 3) / 4 * 4;
    static std::string copy;
    copy.assign(static_cast<const char*>(pixels), static_cast<std::size_t>(rowSize * height));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const InputFile image(".png"), model(".obj");
    if (size < 4 || std::memcmp(data, "\x89PNG", 4) != 0) {
        loadModelFile(model.holding(data, size));
        return 0;
    }
    const std::string& path = image.holding(data, size);
    const SurfacePtr surface(IMG_Load(path.c_str()));
    if (!surface || surface->format->BytesPerPixel > 2) {  // any other depth ends the process
        loadTextureFile(path);
    }
    return 0;
}
