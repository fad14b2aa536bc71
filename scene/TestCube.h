#pragma once

#include "scene/CollisionObject.h"

/// A team's carrier: scenery that never moves.
class TestCube : public CollisionObject
{
public:
    TestCube(long long id, bool flag, bool blueTeam);
    TestCube(int high, int low, bool flag, bool blueTeam);

    /// Loads the carrier's texture and model on first use.
    void init(bool newFlag, bool blue);
    void realDraw() override;
    void realUpdate(float dt) override;

    bool blueTeam = false;
    bool flag = false;  ///< kept, never read
};
