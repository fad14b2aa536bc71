// Drawing 1,000 ships, against the least OpenGL calls that draw the same scene.
#include "bench/Fleet.h"
#include "engine/Engine.h"
#include "engine/OpenGL.h"
#include "engine/ResourceManager.h"
#include "math/Matrix4.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

constexpr float modelScale = 0.05F;  // as Player draws it

/// A fleet that has come to rest, and each ship's pose and size in one matrix.
struct Stage
{
    Stage()
    {
        fleet.settle();
        for (const Player* ship : fleet.ships) {
            Matrix4& matrix = matrices.emplace_back(ship->getRotationMatrix() * modelScale);
            matrix.m[12] = ship->position.x;
            matrix.m[13] = ship->position.y;
            matrix.m[14] = ship->position.z;
        }
    }

    unsigned int list = ResourceManager::getInstance()->getModel("fighter.obj");
    Fleet fleet{1000};
    std::vector<Matrix4> matrices;
};

void drawScene(const Stage& stage)
{
    stage.fleet.scene->draw();
}

void drawBare(const Stage& stage)
{
    for (const Matrix4& matrix : stage.matrices) {
        glPushMatrix();
        glMultMatrixf(matrix.m);
        glCallList(stage.list);
        glPopMatrix();
    }
}

using Draw = void (*)(const Stage&);

/// The number of window pixels that show a ship.
std::ptrdiff_t coverage(const Stage& stage, Draw draw)
{
    std::vector<float> depths(static_cast<std::size_t>(VT.window.width) *
                              static_cast<std::size_t>(VT.window.height));
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    draw(stage);
    glReadPixels(0, 0, VT.window.width, VT.window.height, GL_DEPTH_COMPONENT, GL_FLOAT, depths.data());
    return std::count_if(depths.begin(), depths.end(), [](float depth) { return depth < 1.0F; });
}

void drawing(benchmark::State& state, Draw draw)
{
    const Stage stage;
    const std::ptrdiff_t wanted = coverage(stage, drawScene);
    if (wanted < 10000 || std::abs(coverage(stage, draw) - wanted) > wanted / 100) {
        state.SkipWithError("another picture");
    }
    while (state.KeepRunning()) {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        draw(stage);
        glFinish();
    }
}

// The rasteriser has threads of its own: processor time counts all of them.
BENCHMARK_CAPTURE(drawing, scene, drawScene)->UseRealTime()->MeasureProcessCPUTime();
BENCHMARK_CAPTURE(drawing, bare, drawBare)->UseRealTime()->MeasureProcessCPUTime();

}  // namespace
