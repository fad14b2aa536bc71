#include "scene/SceneGraph.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <unordered_set>

SceneGraph* SceneGraph::instance = nullptr;

namespace {

constexpr std::size_t initialBuckets = 11;

template <class Table, class Key>
Transform* lookUp(const Table& table, const Key& key)
{
    const auto entry = table.find(key);
    return entry == table.end() ? nullptr : entry->second;
}

using Objects = std::list<Transform*>;

// Takes the first element equal to each of `leaving` out of `list`, in one walk. Compares addresses and never
// looks behind them: a list may hold objects that died elsewhere.
void unlinkFirst(Objects& list, const Objects& leaving)
{
    std::unordered_set<const Transform*> pending(leaving.begin(), leaving.end());
    list.remove_if([&](const Transform* t) { return pending.erase(t) > 0; });
}

}  // namespace

SceneGraph* SceneGraph::getInstance()
{
    if (instance == nullptr) {
        instance = new SceneGraph;
    }
    return instance;
}

SceneGraph::SceneGraph()
    : Transform(0ULL), tcpTable(initialBuckets), udpTable(initialBuckets), idTable(initialBuckets)
{
}

SceneGraph::~SceneGraph()
{
    destroyChildren();
}

void SceneGraph::addTransformToType(Transform* t, SceneGraphType objectType)
{
    std::list<Transform*>* objects = getListOfType(objectType);
    if (objects == nullptr) {
        objects = &typeLists.emplace_back(objectType, std::list<Transform*>()).second;
    }
    objects->push_back(t);
    if (objectType == SGT_PLAYER) {
        tcpTable[t->getTCPid()] = t;
        udpTable[t->getUDPid()] = t;
    }
    idTable[static_cast<long long>(t->id)] = t;
}

std::list<Transform*>* SceneGraph::getListOfType(SceneGraphType objectType)
{
    const auto found = std::find_if(typeLists.begin(), typeLists.end(),
                                    [=](const auto& entry) { return entry.first == objectType; });
    return found == typeLists.end() ? nullptr : &found->second;
}

Transform* SceneGraph::getOBjectById(long long objectId)
{
    return lookUp(idTable, objectId);
}

Transform* SceneGraph::getObjectByUDPid(long long key)
{
    return lookUp(udpTable, key);
}

Transform* SceneGraph::getObjectByTCPid(void* key)
{
    return lookUp(tcpTable, key);
}

void SceneGraph::addToRemoveList(Transform* t)
{
    addToRemoveList(&t->parent->children, t);
}

void SceneGraph::addToRemoveList(std::list<Transform*>* from, Transform* t)
{
    if (t->queuedForRemoval) {
        return;
    }
    t->queuedForRemoval = true;
    auto request = std::find_if(removeRequests.begin(), removeRequests.end(),
                                [=](const RemoveRequest& r) { return r.from == from; });
    if (request == removeRequests.end()) {
        removeRequests.push_back({from, {}});
        request = std::prev(removeRequests.end());
    }
    request->objects.push_back(t);
    removeList.push_back(t);
}

void SceneGraph::applyRemoveList()
{
    if (removeList.empty()) {
        return;
    }
    for (const RemoveRequest& request : removeRequests) {
        unlinkFirst(*request.from, request.objects);
    }
    const TypeListPlaces places = placesInTypeLists(removeList);
    for (Transform* t : removeList) {
        unregister(t, places);
        t->destroyChildren();
        delete t;
    }
    removeRequests.clear();
    removeList.clear();
}

// One walk over the type lists, however many objects leave. Compares addresses, as unlinkFirst does. Objects
// without a type get no place, so their entry stays in the list for ever.
SceneGraph::TypeListPlaces SceneGraph::placesInTypeLists(const Objects& leaving)
{
    TypeListPlaces places(leaving.size());
    for (Transform* t : leaving) {
        places.emplace(t, std::nullopt);
    }
    for (auto& [objectType, objects] : typeLists) {
        for (auto it = objects.begin(); objectType != SGT_NONE && it != objects.end(); ++it) {
            const auto found = places.find(*it);
            if (found != places.end() && !found->second && found->first->type == objectType) {
                found->second = it;
            }
        }
    }
    return places;
}

// Takes one object out of its type list and the tables.
void SceneGraph::unregister(Transform* t, const TypeListPlaces& places)
{
    const auto place = places.find(t);
    if (place != places.end() && place->second) {
        getListOfType(t->type)->erase(*place->second);
    }
    tcpTable.erase(t->getTCPid());
    udpTable.erase(t->getUDPid());
    idTable.erase(static_cast<long long>(t->id));
}
