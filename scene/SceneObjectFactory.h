#pragma once

#include "scene/Transform.h"

#include <cstdint>

/// Makes the scene objects that no server message announces: explosions. A singleton, created and initialised
/// with 0 on first use, never destroyed; main thread only.
class SceneObjectFactory
{
public:
    static SceneObjectFactory* instance;
    static SceneObjectFactory* getInstance();

    void init(int newNumber);
    /// A new object of the type, not yet in the scene; the caller owns it. Only explosions (type 2) are made
    /// here. Any other type prints a line and returns null.
    Transform* create(int type);
    /// Puts the object into the scene, which owns it from then on.
    void ship(Transform* t);

    std::int32_t number = 0;
    std::int32_t nextId = 1;  ///< the id given last: the first object made gets 2
    bool flag = false;
};
