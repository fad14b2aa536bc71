#include "engine/VT_Window.h"

#include "tests/engine/FreshWorld.h"

using Window = FreshWorld;
using WindowDeathTest = FreshWorld;

// The state that OpenGL starts with is compared in tests/end_to_end.
TEST_F(Window, IsOpenedAsAsked)
{
    glRecorder.deliver(4, 0xFF0000, 800, 600);
    VT.init();
    // 16 bits of depth, two buffers, OpenGL
    EXPECT_EQ(glRecorder.take("SDL"),
              script("SDL_Init 65535; SDL_GL_SetAttribute 6 16; SDL_GL_SetAttribute 5 1;"
                     "SDL_SetVideoMode 800 600 0 2"));
}

TEST_F(WindowDeathTest, WithoutSdlOrAVideoModeTheProcessEndsWithAMessage)
{
    EXPECT_EXIT(VT.init(), testing::ExitedWithCode(2),
                "Couldn't set 800x600 OpenGL video mode: no such luck\n");
    glRecorder.sdlInitResult = -1;
    EXPECT_EXIT(VT.init(), testing::ExitedWithCode(1), "Couldn't initialize SDL: no such luck\n");
}
