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

    /// Starts SDL and opens the window. On failure prints a line to standard error and ends the process. The
    /// status is 1 without SDL, 2 without a window.
    void init();
    /// The pointer's distance from the window's centre, in pixels to the right and down. Moves the pointer
    /// back to the centre.
    std::pair<float, float> getMouseDiff();
    /// Draws the sky around the viewer's position. Draws nothing before the first setSkyBox.
    void drawSkybox(Vector3 position);
    /// Replaces the sky by the image file of that name, see VT_Skybox.
    void setSkyBox(std::string textureName);

    VT_InputHandler inputHandler;
    VT_Window window;
    std::unique_ptr<VT_Skybox> skybox;  ///< null until setSkyBox
};

extern Engine VT;
