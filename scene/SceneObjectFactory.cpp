#include "scene/SceneObjectFactory.h"

#include "Common/DebugPrint.h"
#include "scene/Billboard.h"
#include "scene/SceneGraph.h"

SceneObjectFactory* SceneObjectFactory::instance = nullptr;

SceneObjectFactory* SceneObjectFactory::getInstance()
{
    if (instance == nullptr) {
        instance = new SceneObjectFactory;
        instance->init(0);
    }
    return instance;
}

void SceneObjectFactory::init(int newNumber)
{
    number = newNumber;
    nextId = 1;
    flag = false;
}

Transform* SceneObjectFactory::create(int type)
{
    if (type != SGT_BILLBOARD) {
        DebugPrint("Error creating type of %d", type);
        return nullptr;
    }
    // Unsigned, so that it wraps: a server may cause more explosions than an int can count.
    nextId = static_cast<std::int32_t>(static_cast<std::uint32_t>(nextId) + 1U);
    return new Billboard(nextId);
}

void SceneObjectFactory::ship(Transform* t)
{
    SceneGraph::getInstance()->attach(t);
}
