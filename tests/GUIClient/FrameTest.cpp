#include "GUIClient/drawGL.h"
#include "engine/VT_Skybox.h"
#include "scene/Player.h"
#include "scene/Projectile.h"
#include "tests/engine/FreshWorld.h"

namespace {

class Frame : public FreshWorld
{
protected:
    // The first frame sends nothing and takes a few milliseconds at most.
    Frame()
    {
        controller->update(1.0F);
        timer.getTimeDiff();
        glRecorder.take();
    }
};

}  // namespace

// tests/engine compares all calls of a frame.
TEST_F(Frame, TakesInputDrawsTheSceneThenTheDisplay)
{
    VT.window.width = 640;
    VT.window.height = 480;
    glRecorder.mouseX = 320;
    glRecorder.mouseY = 240;
    drawGL();
    EXPECT_EQ(
        glRecorder.take("Poll|Warp|Clear|LookAt|glTranslate|Ortho|Swap"),
        script("SDL_PollEvent; SDL_WarpMouse 320 240; glClear 16640; gluLookAt 0 0 0 0 0 1 0 1 0;"
               "glTranslatef 0 0 0; gluOrtho2D 0 640 0 480; glTranslatef 0 -480 0; SDL_GL_SwapBuffers"));
}

TEST_F(Frame, TheCameraFollowsTheShipAndTheSkyTheCamera)
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
    EXPECT_EQ(glRecorder.take("LookAt|Translate.* 30$"),
              script("gluLookAt 5 22 30 5 22 31 0 1 0; glTranslatef 5 22 30; glTranslatef 10 20 30"));

    graph->idTable.clear();  // no object has the own id any more: the camera stays
    drawGL();
    EXPECT_EQ(glRecorder.take("LookAt"), script("gluLookAt 5 22 30 5 22 31 0 1 0"));
}

TEST_F(Frame, AnExpiredShotIsNotDrawn)
{
    auto* stays = new Projectile(1ULL);
    auto* leaves = new Projectile(2ULL);
    graph->attach(leaves);
    graph->attach(stays);
    leaves->lifetime = -1.0F;
    drawGL();
    EXPECT_EQ(glRecorder.take("glScalef 0.01"), script("glScalef 0.01 0.01 0.01"));
    EXPECT_EQ(graph->children, std::list<Transform*>{stays});
}
