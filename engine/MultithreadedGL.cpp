// For platforms whose OpenGL has no such switch.
#include "engine/MultithreadedGL.h"

bool enableMultithreadedGL()
{
    return true;
}
