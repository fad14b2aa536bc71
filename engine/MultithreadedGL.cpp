// For platforms on which OpenGL offers no such switch: nothing to ask for, so nothing that could be refused.
#include "engine/MultithreadedGL.h"

bool enableMultithreadedGL()
{
    return true;
}
