#pragma once

#include "engine/VT_InputHandler.h"
#include "engine/VT_Window.h"
#include "math/Vector3.h"

#include <memory>
#include <string>
#include <utility>

class VT_Skybox;

/// The window, the input and the sky. There is one, VT, for the life of the process; main thread only.
class Engine
{
public:
    Engine();
    ~Engine();
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    /// Brings up SDL and opens the window. Ends the process with status 1 or 2, and a line on standard error,
    /// where that fails.
    void init();
    /// How far the pointer is from the window's centre, in pixels to the right and down; puts it back there.
    std::pair<float, float> getMouseDiff();
    /// Draws the sky around the viewer's position; nothing where no sky has been set.
    void drawSkybox(Vector3 position);
    /// Replaces the sky by the image of that name, see VT_Skybox.
    void setSkyBox(std::string textureName);

    VT_InputHandler inputHandler;
    VT_Window window;
    std::unique_ptr<VT_Skybox> skybox;  ///< null until setSkyBox
};

extern Engine VT;
