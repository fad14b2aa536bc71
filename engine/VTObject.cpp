#include "engine/VTObject.h"

void VTObject::keyboardEvent(SDL_Event /*event*/) {}
