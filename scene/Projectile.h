#pragma once

#include "scene/CollisionObject.h"

/// A shot: flies on with the velocity it was announced with, until the server destroys it or its lifetime is
/// over. It is always drawn with the orientation it was made with.
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
