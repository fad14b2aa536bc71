#pragma once

#include "math/Quaternion.h"
#include "scene/CollisionObject.h"

#include <cstdint>
#include <string>

/// A ship of either team, also this client's own: moved by the server's states, smoothed in position and
/// orientation.
///
/// Main thread only; the constructor loads the ship's texture on first use. Its drawn position is the one
/// that the previous frame smoothed: one frame late, on purpose.
class Player : public CollisionObject
{
public:
    Player(unsigned long long newId, bool blue, int hitPoints);
    Player(unsigned int high, unsigned int low, bool blue, int hitPoints);

    void init();
    void realDraw() override;
    void realUpdate(float dt) override;
    void updateInfo(unsigned int time, Vector3& newPosition, Quaternion& newOrientation, bool reset) override;

    std::string name;  ///< bytes from the server, of any length
    bool blueTeam;
    float health;            ///< hit points; any float, NaN included
    std::int32_t score = 0;  ///< the player's own
    Quaternion angularStep;  ///< turn from the shown to the newest server orientation, when that arrived

private:
    void smoothTheOrientation(float dt);
};
