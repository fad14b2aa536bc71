#include "GUIClient/Helpers.h"
#include "GUIClient/VTEntryPoint.h"
#include "GUIClient/drawGL.h"
#include "engine/Engine.h"
#include "engine/ResourceManager.h"
#include "engine/VT_Skybox.h"
#include "scene/Player.h"
#include "scene/Projectile.h"
#include "scene/SceneGraph.h"
#include "tests/engine/FreshWorld.h"
#include "tests/engine/GLRecorder.h"

#include <SDL_opengl.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace {

class Frame : public FreshWorld
{
protected:
    // A frame that loads nothing and, within the same few milliseconds, sends nothing.
    Frame()
    {
        ResourceManager::getInstance()->fonts["arial.ttf"] = nullptr;
        ResourceManager::getInstance()->textures["texture-white.png"] = 11;
        VTEntryPoint::getInstance()->update(1.0F);
        timer.getTimeDiff();
        glRecorder.take();
    }

    SceneGraph* graph = SceneGraph::getInstance();
};

}  // namespace

TEST_F(Frame, AnEmptySceneIsDrawnInFull)
{
    const Call clear = call("glClear", GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glRecorder.mouseX = 320;
    glRecorder.mouseY = 240;
    VT.window.width = 640;
    VT.window.height = 480;
    drawGL();
    EXPECT_EQ(glRecorder.calls.front(), call("SDL_PollEvent"));
    EXPECT_EQ(glRecorder.named("SDL_WarpMouse"), Calls{call("SDL_WarpMouse", 320, 240)});
    // how often the mouse is asked depends on the frame time: compare from the drawing on
    Calls& calls = glRecorder.calls;
    const auto cleared = std::find(calls.begin(), calls.end(), clear);
    ASSERT_NE(cleared, calls.end());
    calls.erase(calls.begin(), cleared + 1);
    EXPECT_TRUE(recordedExactly(
        R"(glLoadIdentity; glPushMatrix; gluLookAt 0 0 0 0 0 1 0 1 0; glPushMatrix; glScalef 1 1 1;
        glTranslatef 0 0 0; glMultMatrixf 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1; glPopMatrix; glPopMatrix;
        glMatrixMode GL_PROJECTION; glPushMatrix; glLoadIdentity; gluOrtho2D 0 640 0 480; glScalef 1 -1 1;
        glTranslatef 0 -480 0; glMatrixMode GL_MODELVIEW; glPushAttrib GL_ENABLE_BIT; glDisable GL_LIGHTING;
        glEnable GL_BLEND; glColor4f 1 0 0 1; glPopAttrib; glMatrixMode GL_PROJECTION; glPopMatrix;
        glMatrixMode GL_MODELVIEW; SDL_GL_SwapBuffers)"));
}

TEST_F(Frame, TheCameraFollowsTheOwnShipInTheShipsFrameAndTheSkyFollowsTheCamera)
{
    auto* ship = new Player(0ULL, false, 100);
    graph->attach(ship);
    Vector3 place(10.0F, 20.0F, 30.0F);
    Quaternion quarterTurn = Quaternion::FromAxisAngle(1.5707964F, {0.0F, 1.0F, 0.0F});
    ship->updateInfo(1000, place, quarterTurn, true);
    ship->smoothOrientation = quarterTurn;
    VT.setSkyBox("none.png");
    drawGL();
    // behind the ship is -x; the camera keeps looking along +z
    EXPECT_EQ(glRecorder.named("gluLookAt"), Calls{call("gluLookAt", 5, 22, 30, 5, 22, 31, 0, 1, 0)});
    EXPECT_EQ(glRecorder.named("glTranslatef").at(0), call("glTranslatef", 5, 22, 30));
    EXPECT_EQ(glRecorder.named("glTranslatef").at(2), call("glTranslatef", 10, 20, 30));

    ship->id = 77;  // no object has the own id any more: the camera stays
    graph->idTable.clear();
    glRecorder.take();
    drawGL();
    EXPECT_EQ(glRecorder.named("gluLookAt"), Calls{call("gluLookAt", 5, 22, 30, 5, 22, 31, 0, 1, 0)});
}

TEST_F(Frame, AShotWhoseTimeIsOverIsNotDrawn)
{
    auto* stays = new Projectile(1ULL);
    auto* leaves = new Projectile(2ULL);
    graph->attach(leaves);
    graph->attach(stays);
    leaves->lifetime = -1.0F;
    drawGL();
    const Calls shots = glRecorder.named("glDisable");
    EXPECT_EQ(std::count(shots.begin(), shots.end(), call("glDisable", GL_TEXTURE_2D)), 1);
    EXPECT_EQ(graph->children, std::list<Transform*>{stays});
}
