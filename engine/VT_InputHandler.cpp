#include "engine/VT_InputHandler.h"

#include "GUIClient/Helpers.h"
#include "engine/VTObject.h"

#include <SDL_events.h>
#include <SDL_mouse.h>

#include <cstddef>

namespace {

bool isButtonDown(unsigned int button)
{
    return (SDL_GetMouseState(nullptr, nullptr) & SDL_BUTTON(button)) != 0;
}

}  // namespace

void VT_InputHandler::handleEvents()
{
    SDL_Event event;
    while (SDL_PollEvent(&event) != 0) {
        if (event.type == SDL_QUIT) {
            Helpers::stop();
        } else if (event.type == SDL_KEYDOWN || event.type == SDL_KEYUP) {
            const auto symbol = static_cast<std::size_t>(event.key.keysym.sym);
            if (symbol < keyStates.size()) {
                keyStates[symbol] = event.type == SDL_KEYDOWN;
            }
            callSubscribers(event);
        }
    }
}

// By index: a subscriber may subscribe another one, which then receives the next event.
void VT_InputHandler::callSubscribers(const SDL_Event& event)
{
    const std::size_t count = keyboardSubscribers.size();
    for (std::size_t i = 0; i < count; ++i) {
        keyboardSubscribers[i]->keyboardEvent(event);
    }
}

bool VT_InputHandler::isKeyPressed(SDLKey key) const
{
    const auto symbol = static_cast<std::size_t>(key);
    return symbol < keyStates.size() && keyStates[symbol];
}

void VT_InputHandler::subscribeToKeyboardEvents(VTObject* subscriber)
{
    keyboardSubscribers.push_back(subscriber);
}

bool VT_InputHandler::isLMouseDown() const
{
    return isButtonDown(SDL_BUTTON_LEFT);
}

bool VT_InputHandler::isMMouseDown() const
{
    return isButtonDown(SDL_BUTTON_MIDDLE);
}

bool VT_InputHandler::isRMouseDown() const
{
    return isButtonDown(SDL_BUTTON_RIGHT);
}
