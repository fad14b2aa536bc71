#pragma once

struct SDL_Surface;

/// The window and its OpenGL context. Opened once, never resized; main thread only.
class VT_Window
{
public:
    /// Asks for a 16-bit depth buffer and double buffering. Call it before the window is opened.
    void initAttr();
    /// Opens the window (sizes in pixels) and sets up OpenGL. On failure prints a line to standard error and
    /// ends the process with status 2.
    void createSDLWindow(int newWidth, int newHeight, bool wantFullscreen);
    /// Sets viewport, projection, lights and all other OpenGL state that never changes later.
    void createOpenGLViewport();

    int width = 800;                ///< pixels
    int height = 600;               ///< pixels
    float nearPlane = 1.0F;         ///< world units
    float farPlane = 10000.0F;      ///< world units
    SDL_Surface* screen = nullptr;  ///< owned by SDL; null until the window is open
    bool fullscreen = false;
    float fieldOfView = 60.0F;                        ///< vertical, degrees
    float clearColour[4] = {0.0F, 0.0F, 0.0F, 1.0F};  ///< red, green, blue, alpha

private:
    void setProjection() const;
};
