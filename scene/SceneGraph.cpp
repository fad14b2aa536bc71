#include "scene/SceneGraph.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <vector>

SceneGraph* SceneGraph::instance = nullptr;

namespace {

constexpr std::size_t initialBuckets = 11;

template <class Table, class Key>
Transform* lookUp(const Table& table, const Key& key)
{
    const auto entry = table.find(key);
    return entry == table.end() ? nullptr : entry->second;
}

// The addresses that one walk over a list looks for: filled once, emptied by take(). A table of at least
// twice as many slots with linear probing (Knuth, "The Art of Computer Programming" 3, 6.4), because a
// node-based set would cost more than all the rest of a removal.
class PendingAddresses
{
public:
    /// Lives in `storage`, which is kept from walk to walk: freeing a block of this size makes the allocator
    /// tidy up all the small ones that the walk has just freed.
    template <class Iterator>
    PendingAddresses(Iterator begin, Iterator end, std::vector<const void*>& storage) : slots(storage)
    {
        const auto count = static_cast<std::size_t>(std::distance(begin, end));
        while ((std::size_t{1} << bits) < 2 * count) {
            ++bits;
        }
        slots.assign(std::size_t{1} << bits, nullptr);
        for (; begin != end; ++begin) {
            slots[slotOf(*begin)] = *begin;
        }
    }

    /// Whether the address was still pending; it no longer is.
    bool take(const Transform* t)
    {
        const void*& slot = slots[slotOf(t)];
        const bool found = slot == t;
        slot = found ? this : slot;  // taken, but not free: later addresses of the same run stay reachable
        return found;
    }

private:
    // The slot that holds the address, or the free one that ends its run.
    std::size_t slotOf(const void* address) const
    {
        constexpr std::uint64_t golden = 0x9E3779B97F4A7C15U;  // 2^64 / golden ratio: spreads neighbours
        std::size_t slot = (reinterpret_cast<std::uintptr_t>(address) * golden) >> (64U - bits);
        while (slots[slot] != nullptr && slots[slot] != address) {
            slot = (slot + 1) & (slots.size() - 1);
        }
        return slot;
    }

    unsigned int bits = 1;
    std::vector<const void*>& slots;
};

// Unlinks each object of `gone` once, at its first place. Compares addresses and never looks behind them: a
// list may hold objects that died elsewhere.
template <class Objects>
void unlink(std::list<Transform*>& from, const Objects& gone, std::vector<const void*>& storage)
{
    PendingAddresses pending(gone.begin(), gone.end(), storage);
    from.remove_if([&](const Transform* t) { return pending.take(t); });
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
        unlink(*request.from, request.objects, walkStorage);
    }
    unlinkFromTypeLists();
    for (Transform* t : removeList) {
        forget(t);
        t->destroyChildren();
        delete t;
    }
    removeRequests.clear();
    removeList.clear();
}

// Objects without a type keep their entry in the list of their kind for good.
void SceneGraph::unlinkFromTypeLists()
{
    for (auto& [objectType, objects] : typeLists) {
        gone.clear();
        if (objectType != SGT_NONE) {
            std::copy_if(removeList.begin(), removeList.end(), std::back_inserter(gone),
                         [wanted = objectType](const Transform* t) { return t->type == wanted; });
        }
        if (!gone.empty()) {
            unlink(objects, gone, walkStorage);
        }
    }
}

void SceneGraph::forget(Transform* t)
{
    tcpTable.erase(t->getTCPid());
    udpTable.erase(t->getUDPid());
    idTable.erase(static_cast<long long>(t->id));
}
