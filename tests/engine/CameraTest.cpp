#include "engine/Camera.h"

#include "tests/engine/FreshWorld.h"

#include <tuple>

using View = FreshWorld;

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
