#pragma once

#include "GUIClient/VTEntryPoint.h"
#include "engine/Engine.h"
#include "engine/ResourceManager.h"
#include "scene/SceneGraph.h"
#include "tests/engine/GLRecorder.h"

#include <gtest/gtest.h>

/// A test that starts with an empty scene, empty caches and a camera at the origin: the program's singletons
/// are put back, and nothing has been recorded.
class FreshWorld : public testing::Test
{
protected:
    FreshWorld();

    SceneGraph* graph;
    ResourceManager* resources;
    VTEntryPoint* controller = VTEntryPoint::getInstance();
};

/// Fails unless the points are less than 0.0001 units apart.
void expectNear(Vector3 actual, Vector3 expected);
