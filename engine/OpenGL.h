#pragma once

// Includes this platform's OpenGL and GLU headers. SDL's own copy of the extension header stays out, because
// the system's newer one covers it.
#define NO_SDL_GLEXT
#include <SDL_opengl.h>
