#pragma once

#include <SDL_events.h>

#include <array>
#include <vector>

class VTObject;

/// Drains SDL's event queue, remembers which keys are down, and passes key events on. Main thread only, after
/// SDL_Init.
class VT_InputHandler
{
public:
    /// Handles all queued events; called once per frame. A quit event asks the main loop to stop. Events of
    /// other kinds than keys are dropped.
    void handleEvents();

    /// Whether the key is down after the events handled so far. False for a symbol beyond SDL's range.
    bool isKeyPressed(SDLKey key) const;
    /// Subscribers are called in the order of their subscription. There is no way to unsubscribe.
    void subscribeToKeyboardEvents(VTObject* subscriber);

    // The mouse buttons' present state, read from SDL without events.
    bool isLMouseDown() const;
    bool isMMouseDown() const;
    bool isRMouseDown() const;

    std::vector<VTObject*> keyboardSubscribers;  ///< not owned
    std::array<bool, SDLK_LAST> keyStates = {};  ///< by key symbol, 0 to 322; true while the key is down

private:
    void callSubscribers(const SDL_Event& event);
};
