#pragma once

/// What kind of object a Transform is; the same numbers as ObjectInfo.objectType on the wire.
enum SceneGraphType : int
{
    SGT_NONE = -1,       ///< the scene graph itself, and any plain Transform
    SGT_PLAYER = 0,      ///< Player
    SGT_PROJECTILE = 1,  ///< Projectile
    SGT_BILLBOARD = 2,   ///< Billboard, an explosion
    SGT_CARRIER = 3,     ///< TestCube, a team carrier
};
