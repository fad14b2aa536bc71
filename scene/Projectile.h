#pragma once

#include "scene/CollisionObject.h"

/// A shot: moves by the server's states until the server destroys it or its lifetime is over. Its orientation
/// never changes.
class Projectile : public CollisionObject
{
public:
    explicit Projectile(unsigned long long id);
    Projectile(unsigned int high, unsigned int low);

    void init();
    void realDraw() override;
    void realUpdate(float dt) override;

    float lifetime;  ///< seconds left
    bool blueTeam = false;
};
