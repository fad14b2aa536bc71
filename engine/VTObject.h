#pragma once

#include <SDL_events.h>

/// Whoever wants to hear of keys: subscribe at VT_InputHandler. Never deleted through this type.
class VTObject
{
public:
    /// Called on the main thread for every key pressed and released.
    virtual void keyboardEvent(SDL_Event event);
};
