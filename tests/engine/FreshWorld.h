#pragma once

#include "GUIClient/VTEntryPoint.h"
#include "engine/Engine.h"
#include "engine/ResourceManager.h"
#include "scene/SceneGraph.h"
#include "tests/engine/GLRecorder.h"
#include "tests/math/Near.h"

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
