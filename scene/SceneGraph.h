#pragma once

#include "scene/SceneGraphType.h"
#include "scene/Transform.h"

#include <list>
#include <optional>
#include <unordered_map>
#include <utility>

/// The root of the scene and the registry of its objects. It has a list per type, three look-up tables, and
/// the list of objects to remove.
///
/// A singleton, created on first use; main thread only. Objects enter through Transform::attach. They leave
/// in two steps. addToRemoveList queues an object, also while the tree or a type list is being walked.
/// applyRemoveList unlinks and deletes the queued objects between a frame's update and its drawing. Queue
/// only childless objects: children are deleted with their parent but stay registered.
class SceneGraph : public Transform
{
public:
    static SceneGraph* instance;
    static SceneGraph* getInstance();

    SceneGraph();
    /// Deletes the whole tree.
    ~SceneGraph() override;
    SceneGraph(const SceneGraph&) = delete;
    SceneGraph& operator=(const SceneGraph&) = delete;

    /// Files `t` under its type and its id, and a player under its two keys as well. A later object with the
    /// same id replaces the earlier one in the table.
    void addTransformToType(Transform* t, SceneGraphType objectType);
    /// The live list, or null if no object of that type was ever added. Do not keep it across
    /// applyRemoveList.
    std::list<Transform*>* getListOfType(SceneGraphType objectType);
    // Look-ups by id and by a player's keys: null if there is no such object.
    Transform* getOBjectById(long long objectId);
    Transform* getObjectByUDPid(long long key);
    Transform* getObjectByTCPid(void* key);

    /// Queues `t`, which must be attached, for removal from its parent. A second call has no effect.
    void addToRemoveList(Transform* t);
    /// Queues `t` for removal from `from`, which must outlive the next applyRemoveList. A second call for the
    /// same object has no effect, whatever the list. Searches the lists queued so far, usually one.
    void addToRemoveList(std::list<Transform*>* from, Transform* t);
    /// Unlinks all queued objects from the lists they were queued with. Then, object by object, takes it out
    /// of its type list and the tables and deletes it. Linear in the lists' lengths, however many objects
    /// leave.
    void applyRemoveList();

    struct RemoveRequest
    {
        std::list<Transform*>* from;
        std::list<Transform*> objects;
    };

    std::list<RemoveRequest> removeRequests;
    std::list<Transform*> removeList;
    std::list<std::pair<SceneGraphType, std::list<Transform*>>> typeLists;
    std::unordered_map<void*, Transform*> tcpTable;
    std::unordered_map<long long, Transform*> udpTable;
    std::unordered_map<long long, Transform*> idTable;

private:
    // The first place of each leaving object in the list of its type, if it is there.
    using TypeListPlaces = std::unordered_map<Transform*, std::optional<std::list<Transform*>::iterator>>;

    TypeListPlaces placesInTypeLists(const std::list<Transform*>& leaving);
    void unregister(Transform* t, const TypeListPlaces& places);
};
