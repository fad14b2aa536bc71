#pragma once

#include "math/Quaternion.h"
#include "math/Vector3.h"
#include "scene/Transform.h"

/// An explosion: a picture of 10 by 10 world units that faces the camera as it was at its creation, stands
/// still for a second and is gone.
class Billboard : public Transform
{
public:
    explicit Billboard(long long id);
    Billboard(long long id, Vector3 at);
    /// Turned by q instead of facing the camera.
    Billboard(long long id, Vector3 at, Quaternion q);

    void init();
    void realDraw() override;
    void realUpdate(float dt) override;

    float lifetime = 1.0F;  ///< seconds left
};
