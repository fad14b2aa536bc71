#pragma once

#include <SDL_events.h>

/// Base of keyboard subscribers, see VT_InputHandler::subscribeToKeyboardEvents. Never deleted through this
/// type.
class VTObject
{
public:
    /// Called on the main thread for every key pressed and released.
    virtual void keyboardEvent(SDL_Event event);
};
