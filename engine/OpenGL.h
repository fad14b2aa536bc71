#pragma once

// OpenGL and GLU under the names and in the place that this platform has them; without SDL's own copy of the
// extension header, which the system's newer one already covers.
#define NO_SDL_GLEXT
#include <SDL_opengl.h>
