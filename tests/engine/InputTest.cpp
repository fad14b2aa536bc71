#include "GUIClient/Helpers.h"
#include "engine/Engine.h"
#include "engine/VTObject.h"
#include "tests/engine/FreshWorld.h"
#include "tests/engine/GLRecorder.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

class Input : public FreshWorld
{
protected:
    VT_InputHandler input;
};

class Listener : public VTObject
{
public:
    Listener(std::string& sharedLog, char listenerName) : log(sharedLog), name(listenerName) {}
    void keyboardEvent(SDL_Event event) override
    {
        log += name;
        log += event.type == SDL_KEYDOWN ? '+' : '-';
        log += static_cast<char>(event.key.keysym.sym);
    }

private:
    std::string& log;
    char name;
};

}  // namespace

TEST_F(Input, KeysAreDownFromTheirPressToTheirRelease)
{
    EXPECT_FALSE(input.isKeyPressed(SDLK_w));
    glRecorder.events = {keyEvent(SDL_KEYDOWN, SDLK_w), keyEvent(SDL_KEYDOWN, SDLK_UNDO)};
    input.handleEvents();
    EXPECT_TRUE(input.isKeyPressed(SDLK_w));
    EXPECT_TRUE(input.isKeyPressed(SDLK_UNDO));  // the last symbol there is, 322
    EXPECT_FALSE(input.isKeyPressed(SDLK_s));
    input.handleEvents();
    EXPECT_TRUE(input.isKeyPressed(SDLK_w));
    glRecorder.events = {keyEvent(SDL_KEYUP, SDLK_w)};
    input.handleEvents();
    EXPECT_FALSE(input.isKeyPressed(SDLK_w));
}

TEST_F(Input, SubscribersHearEveryPressAndReleaseInOrder)
{
    std::string log;
    Listener first(log, '1');
    Listener second(log, '2');
    input.subscribeToKeyboardEvents(&first);
    input.subscribeToKeyboardEvents(&second);
    SDL_Event motion = {};
    motion.type = SDL_MOUSEMOTION;
    glRecorder.events = {keyEvent(SDL_KEYDOWN, SDLK_c), motion, keyEvent(SDL_KEYUP, SDLK_c),
                         keyEvent(SDL_KEYDOWN, SDLK_a)};
    input.handleEvents();
    EXPECT_EQ(log, "1+c2+c1-c2-c1+a2+a");
    EXPECT_FALSE(input.isKeyPressed(SDLK_c));
    EXPECT_TRUE(input.isKeyPressed(SDLK_a));
}

TEST_F(Input, QuitStopsTheLoopAndTheEventsBehindItStillCount)
{
    SDL_Event quit = {};
    quit.type = SDL_QUIT;
    glRecorder.events = {quit, keyEvent(SDL_KEYDOWN, SDLK_d)};
    input.handleEvents();
    EXPECT_TRUE(done);
    EXPECT_TRUE(input.isKeyPressed(SDLK_d));
    EXPECT_TRUE(glRecorder.events.empty());
}

TEST_F(Input, AMouseButtonIsDownWhenItsBitIs)
{
    for (const int state : {0, 1, 2, 3, 4, 5, 6, 7, 8}) {
        glRecorder.mouseButtons = static_cast<Uint8>(state);
        EXPECT_EQ(input.isLMouseDown(), (state & 1) != 0);
        EXPECT_EQ(input.isMMouseDown(), (state & 2) != 0);
        EXPECT_EQ(input.isRMouseDown(), (state & 4) != 0);
    }
}

TEST_F(Input, TheMouseIsReadFromTheCentreAndPutBackThere)
{
    const struct
    {
        int width, height, x, y;
        float dx, dy;
        int centreX, centreY;
    } cases[] = {
        {800, 600, 400, 300, 0, 0, 400, 300},
        {800, 600, 0, 599, -400, 299, 400, 300},
        {801, 333, 410, 160, 10, -6, 400, 166},
    };
    for (const auto& c : cases) {
        VT.window.width = c.width;
        VT.window.height = c.height;
        glRecorder.mouseX = c.x;
        glRecorder.mouseY = c.y;
        EXPECT_EQ(VT.getMouseDiff(), std::make_pair(c.dx, c.dy));
        EXPECT_EQ(glRecorder.take(),
                  (Calls{call("SDL_GetMouseState"), call("SDL_WarpMouse", c.centreX, c.centreY)}));
    }
}
