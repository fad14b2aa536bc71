// For macOS, whose OpenGL can work on a thread of its own.
#include "engine/MultithreadedGL.h"

#include <OpenGL/OpenGL.h>

bool enableMultithreadedGL()
{
    return CGLEnable(CGLGetCurrentContext(), kCGLCEMPEngine) == kCGLNoError;
}
