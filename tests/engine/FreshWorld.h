#pragma once

#include "GUIClient/Helpers.h"
#include "GUIClient/VTEntryPoint.h"
#include "engine/Engine.h"
#include "engine/ResourceManager.h"
#include "engine/VT_Skybox.h"
#include "network/PacketSender.h"
#include "scene/General.h"
#include "scene/SceneGraph.h"
#include "tests/engine/GLRecorder.h"
#include "tests/math/Near.h"
#include "tests/network/Support.h"

#include <utility>

/// A test that starts with an empty scene, empty caches and a camera at the origin. The program's singletons
/// are renewed, and the recorder is empty.
class FreshWorld : public testing::Test
{
protected:
    FreshWorld()
    {
        resources->resourceFolder = "/there/";
        controller->camera = Camera();
        VT.window = VT_Window();
        VT.inputHandler = VT_InputHandler();
        VT.skybox.reset();
        *PacketSender::getInstance() = PacketSender();
        mainLoopFunctionsList.clear();
        done = false;
        glRecorder = GLRecorder();
    }

    template <class Singleton>
    static Singleton* renewed()
    {
        delete std::exchange(Singleton::instance, nullptr);
        return Singleton::getInstance();
    }

    SceneGraph* graph = renewed<SceneGraph>();
    General* general = renewed<General>();
    ResourceManager* resources = renewed<ResourceManager>();
    VTEntryPoint* controller = VTEntryPoint::getInstance();
};
