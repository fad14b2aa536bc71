#pragma once

#include "engine/Camera.h"
#include "engine/VTObject.h"
#include "math/Quaternion.h"
#include "math/Vector3.h"

#include <cstdint>

class TestCube;

/// The game controller. It owns the camera, places the carriers and draws the display. It turns keys and
/// mouse into camera motion and messages to the server. Escape ends the game.
///
/// A singleton, created on first use; main thread only. It does not move the own ship: the ship's motion
/// comes back from the server.
class VTEntryPoint : public VTObject
{
public:
    static VTEntryPoint* instance;
    static VTEntryPoint* getInstance();

    VTEntryPoint() = default;
    /// Deletes the carriers, unless the scene has already removed them.
    ~VTEntryPoint();
    VTEntryPoint(const VTEntryPoint&) = delete;
    VTEntryPoint& operator=(const VTEntryPoint&) = delete;

    /// Sets the sky, subscribes to the keyboard and puts both carriers into the scene; once, after the window
    /// is open.
    void init();
    /// One frame of dt seconds. Sends the player's input once at least 0.05 s have gathered, then starts
    /// again from 0.
    void update(float dt);
    /// Turns the camera by the pointer's motion since the last call.
    void updateMouse();
    void keyboardEvent(SDL_Event event) override;
    /// Draws the display; inside a projection in window pixels, y downwards from the top left corner.
    void hud();

    Camera getCamera() { return camera; }
    void setCameraPosition(Vector3 p) { camera.setPosition(p); }
    void setCameraOrientation(Quaternion q) { camera.setOrientation(q); }
    /// Applies the camera to the current matrix and returns its position.
    Vector3 setCamera() { return camera.setCamera(); }

    std::int64_t thisPlayerID = 0;    ///< the own ship's object id; until the Welcome 0, the carriers' id
    TestCube* redCarrier = nullptr;   ///< owned, together with the scene
    TestCube* blueCarrier = nullptr;  ///< owned, together with the scene
    Camera camera;

private:
    void rollCamera(float dt);
    void sendInput();
};
