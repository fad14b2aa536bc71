// The benchmarks that need the client's window: 800 by 600, set up as the client sets it up.
#include "engine/Engine.h"
#include "engine/ResourceManager.h"

#include <SDL_opengl.h>
#include <benchmark/benchmark.h>

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    VT.init();
    glLoadIdentity();
    ResourceManager* resources = ResourceManager::getInstance();
    resources->resourceFolder = VANTOR_RESOURCES;
    resources->precacheTexture("texture-white.png");
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
