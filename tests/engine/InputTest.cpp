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
        heard += name + (event.type == SDL_KEYDOWN ? '+' : '-') + std::to_string(event.key.keysym.sym) + ' ';
    }

    std::string name;
};

}  // namespace

TEST_F(Input, KeysAreDownFromPressToReleaseAndSubscribersHearBothInOrder)
{
    Listener first, second;
    first.name = "first";
    second.name = "second";
    VT.inputHandler.subscribeToKeyboardEvents(&first);
    VT.inputHandler.subscribeToKeyboardEvents(&second);
    glRecorder.send(SDL_KEYDOWN, SDLK_c);
    glRecorder.send(SDL_KEYUP, SDLK_c);
    glRecorder.send(SDL_MOUSEMOTION);
    VT.inputHandler.handleEvents();
    EXPECT_FALSE(done);
    glRecorder.send(SDL_QUIT);
    glRecorder.send(SDL_KEYDOWN, SDLK_UNDO);  // behind the end it still counts; the last symbol there is
    VT.inputHandler.handleEvents();
    EXPECT_TRUE(done);
    EXPECT_EQ(heard, "first+99 second+99 first-99 second-99 first+322 second+322 ");
    EXPECT_FALSE(VT.inputHandler.isKeyPressed(SDLK_c));
    EXPECT_TRUE(VT.inputHandler.isKeyPressed(SDLK_UNDO));
}
