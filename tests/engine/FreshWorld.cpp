#include "tests/engine/FreshWorld.h"

#include "GUIClient/Helpers.h"
#include "engine/VT_Skybox.h"
#include "network/PacketSender.h"
#include "scene/General.h"
#include "scene/SceneObjectFactory.h"

#include <utility>

namespace {

template <class Singleton>
void drop()
{
    delete std::exchange(Singleton::instance, nullptr);
}

}  // namespace

FreshWorld::FreshWorld()
{
    drop<SceneGraph>();
    drop<General>();
    drop<SceneObjectFactory>();
    drop<ResourceManager>();
    graph = SceneGraph::getInstance();
    resources = ResourceManager::getInstance();
    controller->camera = Camera();
    controller->thisPlayerID = 0;
    VT.window = VT_Window();
    VT.inputHandler = VT_InputHandler();
    VT.skybox.reset();
    *PacketSender::getInstance() = PacketSender();
    mainLoopFunctionsList.clear();
    done = false;
    glRecorder = GLRecorder();
}
