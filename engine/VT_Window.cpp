#include "engine/VT_Window.h"

#include "engine/OpenGL.h"

#include <SDL.h>

#include <cstdio>
#include <cstdlib>

namespace {

constexpr int noVideoModeStatus = 2;

// Both lights are directional. OpenGL multiplies their positions by the current model-view matrix, here the
// identity. So they stay fixed relative to the viewer, not to the world.
void setLights()
{
    constexpr float ambient[] = {0.5F, 0.5F, 0.5F, 1.0F};
    constexpr float fullDiffuse[] = {1.0F, 1.0F, 1.0F, 1.0F};
    constexpr float fromTheLeft[] = {-1.0F, 0.0F, 0.0F, 0.0F};
    constexpr float halfDiffuse[] = {0.5F, 0.5F, 0.5F, 1.0F};
    constexpr float fromAbove[] = {0.0F, 1.0F, 0.0F, 0.0F};
    glLightModelfv(GL_LIGHT_MODEL_AMBIENT, ambient);
    glLightfv(GL_LIGHT0, GL_DIFFUSE, fullDiffuse);
    glLightfv(GL_LIGHT0, GL_POSITION, fromTheLeft);
    glLightfv(GL_LIGHT1, GL_DIFFUSE, halfDiffuse);
    glLightfv(GL_LIGHT1, GL_POSITION, fromAbove);
}

}  // namespace

void VT_Window::initAttr()
{
    SDL_GL_SetAttribute(SDL_GL_DEPTH_SIZE, 16);
    SDL_GL_SetAttribute(SDL_GL_DOUBLEBUFFER, 1);
}

void VT_Window::createSDLWindow(int newWidth, int newHeight, bool wantFullscreen)
{
    width = newWidth;
    height = newHeight;
    fullscreen = wantFullscreen;
    const Uint32 flags = fullscreen ? SDL_OPENGL | SDL_FULLSCREEN : SDL_OPENGL;
    screen = SDL_SetVideoMode(width, height, 0, flags);  // 0: the display's own depth
    if (screen == nullptr) {
        std::fprintf(stderr, "Couldn't set %dx%d OpenGL video mode: %s\n", width, height, SDL_GetError());
        SDL_Quit();
        std::exit(noVideoModeStatus);
    }
    createOpenGLViewport();
}

void VT_Window::createOpenGLViewport()
{
    glDepthFunc(GL_LESS);
    glEnable(GL_DEPTH_TEST);
    glClearColor(clearColour[0], clearColour[1], clearColour[2], clearColour[3]);
    glViewport(0, 0, width, height);
    setProjection();
    glMatrixMode(GL_MODELVIEW);
    glEnable(GL_COLOR_MATERIAL);
    glEnable(GL_LIGHTING);
    glEnable(GL_LIGHT0);
    glEnable(GL_LIGHT1);
    setLights();
}

void VT_Window::setProjection() const
{
    const float aspect = static_cast<float>(width) / static_cast<float>(height);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    gluPerspective(static_cast<double>(fieldOfView), static_cast<double>(aspect),
                   static_cast<double>(nearPlane), static_cast<double>(farPlane));
}
