#pragma once

#include "scene/SceneGraphType.h"
#include "scene/Transform.h"

#include <list>
#include <unordered_map>
#include <utility>
#include <vector>

/// The root of the scene and the registry of everything in it: a list per type, three look-up tables, and the
/// list of what is to be removed.
///
/// A singleton, created on first use; main thread only. Objects enter through Transform::attach. They leave
/// in two steps: addToRemoveList may be called at any time, also while the tree or a type list is walked;
/// applyRemoveList then unlinks and deletes them all, between a frame's update and its drawing. The tables
/// never yield an object that applyRemoveList has deleted. Only childless objects may be queued: children
/// would be deleted with it but stay registered.
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

    /// Files `t` under its type and its id, a player under its two keys as well. A later object of the same
    /// id takes the earlier one's place in the table.
    void addTransformToType(Transform* t, SceneGraphType objectType);
    /// The live list, or null where no object of that type was ever added. Not to be kept across
    /// applyRemoveList.
    std::list<Transform*>* getListOfType(SceneGraphType objectType);
    /// Null where there is none.
    Transform* getOBjectById(long long objectId);
    Transform* getObjectByUDPid(long long key);
    Transform* getObjectByTCPid(void* key);

    /// Queues `t`, which must be attached, for removal from its parent; a second time has no effect.
    void addToRemoveList(Transform* t);
    /// Queues `t` for removal from `from`, a list that outlives the next applyRemoveList. Searches the lists
    /// named so far: usually one, since everything hangs off the root.
    void addToRemoveList(std::list<Transform*>* from, Transform* t);
    /// Unlinks and deletes what is queued, in at most two walks over each list that loses objects, however
    /// many.
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
    void unlinkFromTypeLists();
    void forget(Transform* t);

    // Kept between calls for their memory alone.
    std::vector<const void*> walkStorage;
    std::vector<Transform*> gone;
};
