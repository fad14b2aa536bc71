#include "engine/Engine.h"

#include "Common/DebugPrint.h"
#include "engine/MultithreadedGL.h"
#include "engine/VT_Skybox.h"

#include <SDL.h>

#include <cstdio>
#include <cstdlib>

Engine VT;

Engine::Engine() = default;
Engine::~Engine() = default;

void Engine::init()
{
    if (SDL_Init(SDL_INIT_EVERYTHING) < 0) {
        std::fprintf(stderr, "Couldn't initialize SDL: %s\n", SDL_GetError());
        std::exit(EXIT_FAILURE);
    }
    window.initAttr();
    window.createSDLWindow(800, 600, false);
    if (!enableMultithreadedGL()) {
        DebugPrint("Could not enable opengl-MT\n");
    }
}

std::pair<float, float> Engine::getMouseDiff()
{
    const int centreX = window.width / 2;
    const int centreY = window.height / 2;
    int x = 0;
    int y = 0;
    SDL_GetMouseState(&x, &y);
    SDL_WarpMouse(static_cast<Uint16>(centreX), static_cast<Uint16>(centreY));
    return {static_cast<float>(x - centreX), static_cast<float>(y - centreY)};
}

void Engine::drawSkybox(Vector3 position)
{
    if (skybox) {
        skybox->draw(position);
    }
}

void Engine::setSkyBox(std::string textureName)
{
    skybox.reset();  // the old sky is destroyed before the new one is made
    skybox = std::make_unique<VT_Skybox>(std::move(textureName));
}
