#include "GUIClient/drawGL.h"

#include "GUIClient/VTEntryPoint.h"
#include "engine/Engine.h"
#include "engine/OpenGL.h"
#include "network/NetworkHelper.h"
#include "scene/SceneGraph.h"

#include <SDL_video.h>

#include <algorithm>

Timer timer;

namespace {

constexpr Vector3 cameraOffset(0.0F, 2.0F, -5.0F);  // above and behind the ship, in the ship's own frame

// Moves the camera to the own ship; the camera keeps its own orientation. Without an object of that id it
// stays. Before the server's Welcome the id is 0, which is the blue carrier's.
void followOwnShip()
{
    VTEntryPoint* controller = VTEntryPoint::getInstance();
    controller->thisPlayerID = static_cast<std::int64_t>(NetworkHelper::getInstance()->getThisPlayerID());
    const Transform* ship = SceneGraph::getInstance()->getOBjectById(controller->thisPlayerID);
    if (ship != nullptr) {
        controller->setCameraPosition(ship->position + ship->orientation.rotate(cameraOffset));
    }
}

void drawScene()
{
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glLoadIdentity();
    glPushMatrix();
    const Vector3 viewer = VTEntryPoint::getInstance()->setCamera();
    VT.drawSkybox(viewer);
    SceneGraph::getInstance()->draw();
    glPopMatrix();
}

// Window pixels, the origin at the top left corner, y downwards.
void pushPixelProjection()
{
    const int width = VT.window.width;
    const int height = VT.window.height;
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    gluOrtho2D(0.0, width, 0.0, height);
    glScalef(1.0F, -1.0F, 1.0F);
    glTranslatef(0.0F, static_cast<float>(-height), 0.0F);
    glMatrixMode(GL_MODELVIEW);
}

void popProjection()
{
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
}

void drawDisplay()
{
    pushPixelProjection();
    glPushAttrib(GL_ENABLE_BIT);
    glDisable(GL_LIGHTING);
    glEnable(GL_BLEND);
    glColor4f(1.0F, 0.0F, 0.0F, 1.0F);
    VTEntryPoint::getInstance()->hud();
    glPopAttrib();
    popProjection();
}

}  // namespace

void drawGL()
{
    VT.inputHandler.handleEvents();
    NetworkHelper::getInstance()->dispatchRecievedPackages();
    const auto dt = static_cast<float>(std::max(0.0, timer.getTimeDiff()));  // the clock may be set back
    VTEntryPoint::getInstance()->update(dt);
    SceneGraph::getInstance()->update(dt);
    followOwnShip();
    SceneGraph::getInstance()->applyRemoveList();
    drawScene();
    drawDisplay();
    SDL_GL_SwapBuffers();
}
