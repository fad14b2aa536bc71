#pragma once

#include "math/Vector3.h"

#include <gtest/gtest.h>

/// A test that starts, and leaves the next one, with an empty scene, empty caches and a camera at the origin:
/// the program's singletons are put back, and nothing has been recorded.
class FreshWorld : public testing::Test
{
protected:
    FreshWorld();
    ~FreshWorld() override;
};

/// Fails unless the points are less than 0.0001 units apart.
void expectNear(Vector3 actual, Vector3 expected);
