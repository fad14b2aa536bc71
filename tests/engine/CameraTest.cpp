#include "engine/Camera.h"

#include "engine/Engine.h"
#include "engine/ResourceManager.h"
#include "engine/VT_Skybox.h"
#include "tests/engine/FreshWorld.h"
#include "tests/engine/GLRecorder.h"

#include <SDL_opengl.h>
#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>

namespace {

constexpr float quarterTurn = 1.5707964F;

class View : public FreshWorld
{
protected:
    Camera camera;
};

using Sky = FreshWorld;

}  // namespace

TEST_F(View, LooksAlongZFromWhereItIs)
{
    EXPECT_EQ(camera.setCamera(), Vector3());
    EXPECT_TRUE(recordedExactly("gluLookAt 0 0 0 0 0 1 0 1 0"));
    camera.setPosition({10.0F, 20.0F, 30.0F});
    EXPECT_EQ(camera.setCamera(), Vector3(10.0F, 20.0F, 30.0F));
    EXPECT_TRUE(recordedExactly("gluLookAt 10 20 30 10 20 31 0 1 0"));
}

TEST_F(View, TurnsAboutItsOwnAxes)
{
    const struct
    {
        const char* what;
        float roll, yaw, pitch;  // requested in this order
        Vector3 direction, up;
    } cases[] = {
        {"yaw", 0, quarterTurn, 0, {1, 0, 0}, {0, 1, 0}},
        {"roll", quarterTurn, 0, 0, {0, 0, 1}, {-1, 0, 0}},
        {"pitch", 0, 0, quarterTurn, {0, 1, 0}, {0, 0, -1}},
        {"a small pitch looks up", 0, 0, 0.5F, {0, 0.4794255F, 0.8775826F}, {0, 0.8775826F, -0.4794255F}},
        {"yaw and pitch: the pitch acts first", 0, quarterTurn, quarterTurn, {0, 1, 0}, {-1, 0, 0}},
        {"roll and yaw: about the old up", quarterTurn, quarterTurn, 0, {0, 1, 0}, {-1, 0, 0}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        camera = Camera();
        camera.roll(c.roll);
        camera.yaw(c.yaw);
        camera.pitch(c.pitch);
        expectNear(camera.direction, {0.0F, 0.0F, 1.0F});  // nothing turns before it is set
        for (int frame = 0; frame < 2; ++frame) {          // and it turns once
            camera.setCamera();
            expectNear(camera.direction, c.direction);
            expectNear(camera.up, c.up);
            expectNear(camera.getOrientation().rotate({0.0F, 0.0F, 1.0F}), c.direction);
            EXPECT_EQ(camera.rotation, Quaternion());
        }
    }
}

TEST_F(View, GathersTurnsOverFrames)
{
    camera.yaw(quarterTurn);
    camera.setCamera();
    camera.roll(quarterTurn);
    camera.setCamera();
    expectNear(camera.direction, {1.0F, 0.0F, 0.0F});
    expectNear(camera.up, {0.0F, 0.0F, 1.0F});
    expectNear(camera.getOrientation().rotate({0.0F, 1.0F, 0.0F}), {0.0F, 0.0F, 1.0F});
}

TEST_F(View, MovingDoesNothing)
{
    camera.yaw(1.0F);
    const Camera before = camera;
    camera.move(5.0F, 5.0F);
    EXPECT_EQ(camera.rotation, before.rotation);
    EXPECT_EQ(camera.orientation, before.orientation);
    EXPECT_EQ(camera.position, before.position);
    EXPECT_EQ(camera.up, before.up);
    EXPECT_EQ(camera.direction, before.direction);
    EXPECT_TRUE(glRecorder.calls.empty());
}

TEST_F(Sky, IsAnUnlitCubeAroundTheViewer)
{
    struct Corner
    {
        int x, y, z;  // in halves of the edge
        float u, v;
    };
    const Corner faces[6][4] = {
        {{1, -1, -1, .2507F, .3340333F},
         {-1, -1, -1, .4993F, .3340333F},
         {-1, 1, -1, .4993F, .6659667F},
         {1, 1, -1, .2507F, .6659667F}},
        {{1, -1, 1, .0007F, .3340333F},
         {1, -1, -1, .2493F, .3340333F},
         {1, 1, -1, .2493F, .6659667F},
         {1, 1, 1, .0007F, .6659667F}},
        {{-1, -1, 1, .7507F, .3340333F},
         {1, -1, 1, .9993F, .3340333F},
         {1, 1, 1, .9993F, .6659667F},
         {-1, 1, 1, .7507F, .6659667F}},
        {{-1, -1, -1, .5007F, .3340333F},
         {-1, -1, 1, .7493F, .3340333F},
         {-1, 1, 1, .7493F, .6659667F},
         {-1, 1, -1, .5007F, .6659667F}},
        {{-1, 1, -1, .2507F, .6673667F},
         {-1, 1, 1, .4993F, .9993F},
         {1, 1, 1, .2507F, .9993F},
         {1, 1, -1, .4993F, .6673667F}},
        {{-1, -1, -1, .4993F, .3326333F},
         {-1, -1, 1, .4993F, .0007F},
         {1, -1, 1, .2507F, .0007F},
         {1, -1, -1, .2507F, .3326333F}},
    };
    std::ostringstream expected;
    expected << "glPushMatrix; glPushAttrib GL_ENABLE_BIT; glEnable GL_TEXTURE_2D; glDisable GL_LIGHTING;"
                "glDisable GL_BLEND; glColor4f 1 1 1 1; glTranslatef 7 8 9; glBindTexture GL_TEXTURE_2D 5;";
    for (const auto& face : faces) {
        expected << "glBegin GL_QUADS;";
        for (const Corner& corner : face) {
            expected << "glTexCoord2f " << std::setprecision(8) << corner.u << ' ' << corner.v
                     << "; glVertex3f " << corner.x * 5000 << ' ' << corner.y * 5000 << ' ' << corner.z * 5000
                     << ';';
        }
        expected << "glEnd;";
    }
    expected << "glPopAttrib; glPopMatrix";

    ResourceManager::getInstance()->textures["sky.png"] = 5;
    VT.drawSkybox({7.0F, 8.0F, 9.0F});
    EXPECT_TRUE(recordedExactly(""));  // no sky yet
    VT.setSkyBox("sky.png");
    VT.drawSkybox({7.0F, 8.0F, 9.0F});
    EXPECT_TRUE(recordedExactly(expected.str()));
}

TEST_F(Sky, ItsImageIsLoadedAtOnceAndOnlyOnce)
{
    VT.setSkyBox("sky.png");
    const VT_Skybox* first = VT.skybox.get();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(glRecorder.named("IMG_Load").size(), 1U);
    VT.setSkyBox("sky.png");
    EXPECT_EQ(glRecorder.named("IMG_Load").size(), 1U);
    VT.window.farPlane = 20.0F;
    VT.drawSkybox({});
    EXPECT_EQ(glRecorder.named("glVertex3f").front(), call("glVertex3f", 10, -10, -10));
    EXPECT_EQ(glRecorder.named("glBindTexture").back(), call("glBindTexture", GL_TEXTURE_2D, 0));
}
