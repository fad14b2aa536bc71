#include "tests/engine/FreshWorld.h"

#include "GUIClient/Helpers.h"
#include "GUIClient/VTEntryPoint.h"
#include "engine/Engine.h"
#include "engine/ResourceManager.h"
#include "engine/VT_Skybox.h"
#include "network/PacketSender.h"
#include "scene/General.h"
#include "scene/SceneGraph.h"
#include "scene/SceneObjectFactory.h"
#include "tests/engine/GLRecorder.h"

#include <utility>

namespace {

template <class Singleton>
void drop()
{
    delete std::exchange(Singleton::instance, nullptr);
}

void startAfresh()
{
    drop<SceneGraph>();
    drop<General>();
    drop<SceneObjectFactory>();
    drop<ResourceManager>();
    VT.window = VT_Window();
    VT.inputHandler = VT_InputHandler();
    VT.skybox.reset();
    VTEntryPoint* controller = VTEntryPoint::getInstance();
    controller->camera = Camera();
    controller->thisPlayerID = 0;
    controller->redCarrier = controller->blueCarrier = nullptr;
    *PacketSender::getInstance() = PacketSender();
    mainLoopFunctionsList.clear();
    done = false;
    glRecorder.reset();
}

}  // namespace

FreshWorld::FreshWorld()
{
    startAfresh();
}

FreshWorld::~FreshWorld()
{
    startAfresh();
}

void expectNear(Vector3 actual, Vector3 expected)
{
    EXPECT_LT(actual.distance(expected), 1e-4F) << actual.toString() << ", not " << expected.toString();
}
