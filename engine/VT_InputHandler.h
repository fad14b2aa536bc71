#pragma once

#include <SDL_keysym.h>

#include <array>
#include <vector>

class VTObject;

/// Drains SDL's event queue, remembers which keys are down, and passes key events on. Main thread only, after
/// SDL has been initialised.
class VT_InputHandler
{
public:
    /// Once per frame. A quit event asks the main loop to stop; events other than keys are dropped.
    void handleEvents();

    /// Whether the key is down, as of the events handled so far; false for a symbol that SDL does not know.
    bool isKeyPressed(SDLKey key) const;
    /// For good: there is no way to unsubscribe. Subscribers are called in the order they came.
    void subscribeToKeyboardEvents(VTObject* subscriber);

    // The mouse buttons as they are now, whatever the events say.
    bool isLMouseDown() const;
    bool isMMouseDown() const;
    bool isRMouseDown() const;

    std::vector<VTObject*> keyboardSubscribers;  ///< not owned
    std::array<bool, SDLK_LAST> keyStates = {};  ///< by key symbol, 0 to 322
};
