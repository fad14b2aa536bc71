#pragma once

struct SDL_Surface;

/// The window and its OpenGL context. Opened once, never resized; main thread only.
class VT_Window
{
public:
    /// Asks for a 16-bit depth buffer and double buffering; before the window is opened.
    void initAttr();
    /// Opens the window (sizes in pixels) and sets up OpenGL. Ends the process with status 2, and a line on
    /// standard error, where the display does not provide such a window.
    void createSDLWindow(int newWidth, int newHeight, bool wantFullscreen);
    /// Sets viewport, projection, lights and the other state that stays as it is from here on.
    void createOpenGLViewport();

    int width = 800;                ///< pixels
    int height = 600;               ///< pixels
    float nearPlane = 1.0F;         ///< world units
    float farPlane = 10000.0F;      ///< world units
    SDL_Surface* screen = nullptr;  ///< SDL's; null until the window is open
    bool fullscreen = false;
    float fieldOfView = 60.0F;                        ///< vertical, degrees
    float clearColour[4] = {0.0F, 0.0F, 0.0F, 1.0F};  ///< red, green, blue, alpha

private:
    void setProjection() const;
};
