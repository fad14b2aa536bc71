#include "server/match/SceneMirror.h"

#include "scene/CollisionObject.h"
#include "scene/SceneGraph.h"

namespace practice {

SceneMirror::~SceneMirror()
{
    while (!shown.empty()) {
        hide(*shown.begin());
    }
    apply();
}

void SceneMirror::apply()
{
    SceneGraph::getInstance()->applyRemoveList();
}

void SceneMirror::shipAppeared(const Ship& ship)
{
    show(ship.id, SGT_PLAYER);
}

void SceneMirror::shipVanished(const Ship& ship)
{
    hide(ship.id);
}

void SceneMirror::shotFired(const Shot& shot)
{
    show(shot.id, SGT_PROJECTILE);
}

void SceneMirror::shotEnded(const Shot& shot)
{
    hide(shot.id);
}

void SceneMirror::show(ObjectId id, SceneGraphType type)
{
    auto* object = new CollisionObject(id);  // the scene owns it
    object->type = type;
    SceneGraph::getInstance()->attach(object);
    shown.insert(id);
}

void SceneMirror::hide(ObjectId id)
{
    SceneGraph* scene = SceneGraph::getInstance();
    if (Transform* object = scene->getOBjectById(static_cast<long long>(id))) {
        scene->addToRemoveList(object);
    }
    shown.erase(id);
}

}  // namespace practice
