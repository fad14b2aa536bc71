#include "engine/Camera.h"

#include "engine/VT_Skybox.h"
#include "tests/engine/FreshWorld.h"

#include <regex>
#include <sstream>
#include <tuple>

using View = FreshWorld;
using Sky = FreshWorld;

TEST_F(View, TurnsAboutItsOwnAxes)
{
    // quarter turns: yaw, roll, pitch; a frame is drawn at each | and at the end
    const std::tuple<std::string, Vector3, Vector3> cases[] = {
        {"y", {1, 0, 0}, {0, 1, 0}},    {"r", {0, 0, 1}, {-1, 0, 0}},
        {"p", {0, 1, 0}, {0, 0, -1}},   {"yp", {0, 1, 0}, {-1, 0, 0}},  // within a frame the pitch acts first
        {"ry", {0, 1, 0}, {-1, 0, 0}},                                  // about the old up
        {"y|r|", {1, 0, 0}, {0, 0, 1}},
    };
    for (const auto& [turns, direction, up] : cases) {
        SCOPED_TRACE(turns);
        Camera camera;
        for (const char turn : turns + '|') {
            constexpr float quarterTurn = 1.5707964F;
            camera.yaw(turn == 'y' ? quarterTurn : 0.0F);
            camera.roll(turn == 'r' ? quarterTurn : 0.0F);
            camera.pitch(turn == 'p' ? quarterTurn : 0.0F);
            if (turn == '|') {
                camera.setCamera();
            }
        }
        expectNear(camera.direction, direction);
        expectNear(camera.up, up);
        expectNear(camera.getOrientation().rotate({0.0F, 0.0F, 1.0F}), direction);
        expectNear(camera.getOrientation().rotate({0.0F, 1.0F, 0.0F}), up);
    }
}

TEST_F(Sky, IsLoadedAtOnceAndACubeThatReachesHalfWayToTheFarPlane)
{
    VT.drawSkybox({});  // no sky yet
    VT.setSkyBox("sky.png");
    EXPECT_EQ(glRecorder.take().find("IMG_Load"), 0U);
    VT.window.farPlane = 20.0F;
    VT.drawSkybox({});
    // of each corner the signs of x, y and z and which of the texels' borders u and v
    std::istringstream corners(R"(+--22 ---32 -+-33 ++-23 +-+02 +--12 ++-13 +++03 --+62 +-+72 +++73 -++63
        ---42 --+52 -++53 -+-43 -+-24 -++35 +++25 ++-34 ---31 --+30 +-+20 +--21)");
    const float u[] = {.0007F, .2493F, .2507F, .4993F, .5007F, .7493F, .7507F, .9993F};
    const float v[] = {.0007F, .3326333F, .3340333F, .6659667F, .6673667F, .9993F};
    std::ostringstream expected;
    for (std::string c; corners >> c;) {
        expected << "glTexCoord2f " << u[c[3] - '0'] << ' ' << v[c[4] - '0'] << "\nglVertex3f " << c[0]
                 << "10 " << c[1] << "10 " << c[2] << "10\n";
    }
    EXPECT_EQ(glRecorder.take("TexCoord|Vertex"), std::regex_replace(expected.str(), std::regex("\\+"), ""));
}
