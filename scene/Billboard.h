#pragma once

#include "math/Quaternion.h"
#include "math/Vector3.h"
#include "scene/Transform.h"

/// An explosion: a textured square of 10 by 10 world units. It faces the camera of the moment of its
/// creation, stands still, and queues itself for removal after a second.
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
