#pragma once

#include "math/Quaternion.h"
#include "math/Vector3.h"

/// The viewer: a position and an orientation. Rotations requested during a frame take effect together in
/// setCamera(). Angles in radians, positions in world units; main thread only.
///
/// Without a rotation it looks along +z with +y up, so the right of the screen is -x.
class Camera
{
public:
    void setPosition(Vector3 newPosition) { position = newPosition; }
    /// Changes neither the pending rotation nor `up` and `direction`.
    void setOrientation(Quaternion& newOrientation) { orientation = newOrientation; }
    Quaternion& getOrientation() { return orientation; }

    void roll(float angle);
    void yaw(float angle);
    void pitch(float angle);

    /// Applies the pending rotation, multiplies the view onto the current matrix, and returns the position.
    Vector3 setCamera();
    /// Does nothing: the camera moves by setPosition only.
    void move(float forward, float sideways);

    Quaternion rotation;  ///< requested since the last setCamera()
    Quaternion orientation;
    Vector3 position;
    Vector3 up = {0.0F, 1.0F, 0.0F};
    Vector3 direction = {0.0F, 0.0F, 1.0F};

private:
    void request(float angle, Vector3 axis);
};
