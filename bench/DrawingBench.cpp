// Drawing 1,000 ships, against the least that could draw them, and against the OpenGL calls of the ships
// alone.
#include "bench/Fleet.h"
#include "engine/Engine.h"
#include "engine/ResourceManager.h"
#include "math/Matrix4.h"
#include "scene/TeamColour.h"

#include <SDL_opengl.h>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>

namespace {

constexpr std::size_t fleetSize = 1000;
constexpr float modelScale = 0.05F;
const std::string modelName = "fighter.obj";
const std::string textureName = "texture-white.png";

// A box of twelve triangles: a model so small that its own drawing hides nothing.
unsigned int compileBox()
{
    constexpr float corners[8][3] = {{-9, -4, -15}, {9, -4, -15}, {9, 4, -15}, {-9, 4, -15},
                                     {-9, -4, 15},  {9, -4, 15},  {9, 4, 15},  {-9, 4, 15}};
    constexpr int triangles[12][3] = {{0, 2, 1}, {0, 3, 2}, {4, 5, 6}, {4, 6, 7}, {0, 1, 5}, {0, 5, 4},
                                      {3, 6, 2}, {3, 7, 6}, {0, 7, 3}, {0, 4, 7}, {1, 2, 6}, {1, 6, 5}};
    const unsigned int list = glGenLists(1);
    glNewList(list, GL_COMPILE);
    for (const auto& triangle : triangles) {
        glBegin(GL_TRIANGLES);
        for (const int corner : triangle) {
            glNormal3f(0.0F, 1.0F, 0.0F);
            glTexCoord2d(0.5, 0.5);
            glVertex3fv(corners[corner]);
        }
        glEnd();
    }
    glEndList();
    return list;
}

// The ships' pose and size in one matrix, as a program made for nothing else would keep it.
std::vector<Matrix4> modelMatrices(const Fleet& fleet)
{
    std::vector<Matrix4> matrices;
    for (const Player* ship : fleet.ships) {
        Matrix4 matrix(ship->getRotationMatrix() * modelScale);
        matrix.m[12] = ship->position.x;
        matrix.m[13] = ship->position.y;
        matrix.m[14] = ship->position.z;
        matrices.push_back(matrix);
    }
    return matrices;
}

struct Stage
{
    explicit Stage(unsigned int model)
        : list(model), texture(ResourceManager::getInstance()->getTexture(textureName))
    {
        fleet.settle();
        matrices = modelMatrices(fleet);
        for (const Player* ship : fleet.ships) {
            rotations.emplace_back(ship->getRotationMatrix());
        }
        ResourceManager::getInstance()->models[modelName] = list;
    }

    unsigned int list;
    unsigned int texture;
    Fleet fleet{fleetSize};
    std::vector<Matrix4> matrices;
    std::vector<Matrix4> rotations;
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

// As drawBare, but each ship in its team's colour.
void drawBareInColours(const Stage& stage)
{
    for (std::size_t i = 0; i < stage.matrices.size(); ++i) {
        glPushMatrix();
        glMultMatrixf(stage.matrices[i].m);
        setTeamColour(stage.fleet.ships[i]->blueTeam);
        glCallList(stage.list);
        glPopMatrix();
    }
}

// Exactly the calls that a ship makes, with every value at hand: no tree, no look-up, no matrix to compute.
void drawOwnCalls(const Stage& stage)
{
    for (std::size_t i = 0; i < stage.matrices.size(); ++i) {
        const Player& ship = *stage.fleet.ships[i];
        glPushMatrix();
        glScalef(1.0F, 1.0F, 1.0F);
        glTranslatef(ship.position.x, ship.position.y, ship.position.z);
        glMultMatrixf(stage.rotations[i].m);
        glPushMatrix();
        setTeamColour(ship.blueTeam);
        glBindTexture(GL_TEXTURE_2D, stage.texture);
        glScalef(modelScale, modelScale, modelScale);
        glCallList(stage.list);
        glColor3f(1.0F, 1.0F, 1.0F);
        glPopMatrix();
        glPopMatrix();
    }
}

// The two searches of each ship's drawing, alone.
void lookUpOnly(const Stage& stage)
{
    ResourceManager* resources = ResourceManager::getInstance();
    for (std::size_t i = 0; i < stage.matrices.size(); ++i) {
        benchmark::DoNotOptimize(resources->getTexture(textureName));
        benchmark::DoNotOptimize(resources->getModel(modelName));
    }
}

unsigned int realModel()
{
    static const unsigned int list = ResourceManager::getInstance()->loadModel(modelName);
    return list;
}

unsigned int boxModel()
{
    static const unsigned int list = compileBox();
    return list;
}

using Draw = void (*)(const Stage&);

// How many pixels of the window show a ship.
std::ptrdiff_t coverage(const Stage& stage, Draw draw)
{
    std::vector<float> depths(static_cast<std::size_t>(VT.window.width) *
                              static_cast<std::size_t>(VT.window.height));
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    draw(stage);
    glReadPixels(0, 0, VT.window.width, VT.window.height, GL_DEPTH_COMPONENT, GL_FLOAT, depths.data());
    return std::count_if(depths.begin(), depths.end(), [](float depth) { return depth < 1.0F; });
}

// A picture of something else would be worth nothing; rounding may move a few edges.
bool showsTheShips(const Stage& stage, Draw draw)
{
    const std::ptrdiff_t wanted = coverage(stage, drawScene);
    return wanted > 10000 && std::abs(coverage(stage, draw) - wanted) < wanted / 100;
}

void drawing(benchmark::State& state, Draw draw, unsigned int (*model)())
{
    const unsigned int list = model();
    if (list == 0) {
        state.SkipWithError("no model");
        return;
    }
    const Stage stage(list);
    if (!showsTheShips(stage, draw)) {
        state.SkipWithError("another picture");
        return;
    }
    glColor3f(1.0F, 1.0F, 1.0F);
    glBindTexture(GL_TEXTURE_2D, stage.texture);
    while (state.KeepRunning()) {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        draw(stage);
        glFinish();
    }
}

// The rasteriser has threads of its own.
void allThreads(benchmark::internal::Benchmark* b)
{
    b->UseRealTime()->MeasureProcessCPUTime();
}

BENCHMARK_CAPTURE(drawing, fighter_ours, drawScene, realModel)->Apply(allThreads);
BENCHMARK_CAPTURE(drawing, fighter_bare, drawBare, realModel)->Apply(allThreads);
BENCHMARK_CAPTURE(drawing, fighter_coloured, drawBareInColours, realModel)->Apply(allThreads);
BENCHMARK_CAPTURE(drawing, fighter_calls, drawOwnCalls, realModel)->Apply(allThreads);
BENCHMARK_CAPTURE(drawing, box_ours, drawScene, boxModel)->Apply(allThreads);
BENCHMARK_CAPTURE(drawing, box_bare, drawBare, boxModel)->Apply(allThreads);
BENCHMARK_CAPTURE(drawing, box_coloured, drawBareInColours, boxModel)->Apply(allThreads);
BENCHMARK_CAPTURE(drawing, box_calls, drawOwnCalls, boxModel)->Apply(allThreads);

void lookUps(benchmark::State& state)
{
    const Stage stage(boxModel());
    while (state.KeepRunning()) {
        lookUpOnly(stage);
    }
}
BENCHMARK(lookUps)->Name("drawing/lookups")->Apply(allThreads);

}  // namespace
