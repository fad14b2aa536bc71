#include "GUIClient/Helpers.h"
#include "engine/VTObject.h"
#include "tests/engine/FreshWorld.h"

namespace {

using Input = FreshWorld;

std::string heard;

struct Listener : VTObject
{
    void keyboardEvent(SDL_Event event) override
    {
        heard += (event.type == SDL_KEYDOWN ? '+' : '-') + std::to_string(event.key.keysym.sym);
    }
};

}  // namespace

TEST_F(Input, KeysAreDownFromPressToReleaseAndASubscriberHearsBoth)
{
    Listener listener;
    VT.inputHandler.subscribeToKeyboardEvents(&listener);
    glRecorder.send(SDL_KEYDOWN, SDLK_c);
    glRecorder.send(SDL_KEYUP, SDLK_c);
    glRecorder.send(SDL_MOUSEMOTION);
    VT.inputHandler.handleEvents();
    EXPECT_FALSE(done);
    glRecorder.send(SDL_QUIT);
    glRecorder.send(SDL_KEYDOWN, SDLK_UNDO);  // behind the end it still counts; the last symbol there is
    VT.inputHandler.handleEvents();
    EXPECT_TRUE(done);
    EXPECT_EQ(heard, "+99-99+322");
    EXPECT_FALSE(VT.inputHandler.isKeyPressed(SDLK_c));
    EXPECT_TRUE(VT.inputHandler.isKeyPressed(SDLK_UNDO));
}
