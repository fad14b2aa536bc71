#include "GUIClient/Helpers.h"
#include "engine/VTObject.h"
#include "tests/engine/FreshWorld.h"

namespace {

std::string heard;

class Listener : public VTObject
{
public:
    explicit Listener(const char* listenerName) : name(listenerName) {}
    void keyboardEvent(SDL_Event event) override
    {
        heard += name + (event.type == SDL_KEYDOWN ? '+' : '-') + std::to_string(event.key.keysym.sym) + ' ';
    }

private:
    std::string name;
};

}  // namespace

using Input = FreshWorld;

TEST_F(Input, KeysAreDownFromPressToReleaseAndSubscribersHearBothInOrder)
{
    Listener first("1"), second("2");
    VT.inputHandler.subscribeToKeyboardEvents(&first);
    VT.inputHandler.subscribeToKeyboardEvents(&second);
    heard.clear();
    glRecorder.send(SDL_KEYDOWN, SDLK_c);
    glRecorder.send(SDL_KEYUP, SDLK_c);
    glRecorder.send(SDL_MOUSEMOTION);
    VT.inputHandler.handleEvents();
    EXPECT_FALSE(done);
    glRecorder.send(SDL_QUIT);
    glRecorder.send(SDL_KEYDOWN, SDLK_UNDO);  // behind the end it still counts; the last symbol there is
    VT.inputHandler.handleEvents();
    EXPECT_TRUE(done);
    EXPECT_EQ(heard, "1+99 2+99 1-99 2-99 1+322 2+322 ");
    VT.inputHandler.handleEvents();  // without news
    EXPECT_FALSE(VT.inputHandler.isKeyPressed(SDLK_c));
    EXPECT_TRUE(VT.inputHandler.isKeyPressed(SDLK_UNDO));
}
