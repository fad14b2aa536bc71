#include "engine/Engine.h"
#include "engine/VT_Skybox.h"
#include "engine/VT_Window.h"
#include "tests/engine/FreshWorld.h"
#include "tests/engine/GLRecorder.h"

#include <SDL.h>
#include <SDL_opengl.h>
#include <gtest/gtest.h>

namespace {

class Window : public FreshWorld
{
protected:
    Window() { glRecorder.screen = &screen; }

    FakeImage screen{4, 0xFF0000, 800, 600};
};

using WindowDeathTest = Window;

}  // namespace

TEST_F(Window, IsOpenedWithItsStateSetInOrder)
{
    VT.init();
    EXPECT_TRUE(recordedExactly(R"(SDL_Init 0xFFFF; SDL_GL_SetAttribute SDL_GL_DEPTH_SIZE 16;
        SDL_GL_SetAttribute SDL_GL_DOUBLEBUFFER 1; SDL_SetVideoMode 800 600 0 SDL_OPENGL;
        glDepthFunc GL_LESS; glEnable GL_DEPTH_TEST; glClearColor 0 0 0 1; glViewport 0 0 800 600;
        glMatrixMode GL_PROJECTION; glLoadIdentity; gluPerspective 60 1.3333334 1 10000;
        glMatrixMode GL_MODELVIEW; glEnable GL_COLOR_MATERIAL; glEnable GL_LIGHTING; glEnable GL_LIGHT0;
        glEnable GL_LIGHT1; glLightModelfv GL_LIGHT_MODEL_AMBIENT 0.5 0.5 0.5 1;
        glLightfv GL_LIGHT0 GL_DIFFUSE 1 1 1 1; glLightfv GL_LIGHT0 GL_POSITION -1 0 0 0;
        glLightfv GL_LIGHT1 GL_DIFFUSE 0.5 0.5 0.5 1; glLightfv GL_LIGHT1 GL_POSITION 0 1 0 0)"));
    EXPECT_EQ(VT.window.screen, &screen.surface);
}

TEST_F(Window, OfAnySizeIsRememberedAndFillsItsViewport)
{
    VT_Window window;
    window.createSDLWindow(1024, 512, true);
    EXPECT_EQ(window.width, 1024);
    EXPECT_EQ(window.height, 512);
    EXPECT_TRUE(window.fullscreen);
    EXPECT_EQ(glRecorder.calls.front(), call("SDL_SetVideoMode", 1024, 512, 0, SDL_OPENGL | SDL_FULLSCREEN));
    EXPECT_EQ(glRecorder.named("glViewport"), Calls{call("glViewport", 0, 0, 1024, 512)});
    EXPECT_EQ(glRecorder.named("gluPerspective"), Calls{call("gluPerspective", 60, 2, 1, 10000)});
}

TEST_F(WindowDeathTest, WithoutSdlOrAVideoModeTheProcessEndsWithAMessage)
{
    glRecorder.sdlInitResult = -1;
    EXPECT_EXIT(VT.init(), testing::ExitedWithCode(1), "Couldn't initialize SDL: no such luck\n");
    glRecorder.sdlInitResult = 0;
    glRecorder.screen = nullptr;
    EXPECT_EXIT(VT.init(), testing::ExitedWithCode(2),
                "Couldn't set 800x600 OpenGL video mode: no such luck\n");
}
