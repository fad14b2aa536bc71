#include "scene/SceneGraph.h"

#include "tests/engine/FreshWorld.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using Objects = std::vector<Transform*>;

// An object of any type that says when it is updated and when it is gone.
class Witness : public Transform
{
public:
    Witness(unsigned long long newId, SceneGraphType newType) : Transform(newId) { type = newType; }
    ~Witness() override { ++destroyed; }
    Witness(const Witness&) = delete;
    Witness& operator=(const Witness&) = delete;

    void realUpdate(float) override
    {
        updated.push_back(id);
        if (leavesAtNextUpdate) {
            SceneGraph::getInstance()->addToRemoveList(this);
        }
    }

    bool leavesAtNextUpdate = false;
    static int destroyed;
    static std::vector<unsigned long long> updated;
};

int Witness::destroyed = 0;
std::vector<unsigned long long> Witness::updated;

class Scene : public FreshWorld
{
protected:
    Scene()
    {
        Witness::destroyed = 0;
        Witness::updated.clear();
    }

    Witness* add(unsigned long long id, SceneGraphType type, Transform* parent = SceneGraph::getInstance())
    {
        auto* object = new Witness(id, type);
        parent->attach(object);
        return object;
    }

    Objects listed(int type)
    {
        const auto* list = graph->getListOfType(SceneGraphType(type));
        return list == nullptr ? Objects() : Objects(list->begin(), list->end());
    }

    Objects children() { return {graph->children.begin(), graph->children.end()}; }

    SceneGraph* graph = SceneGraph::getInstance();
};

}  // namespace

TEST_F(Scene, EveryTypeIsFiledByIdAndListOnlyPlayersByTheirKeys)
{
    for (const SceneGraphType type : {SGT_NONE, SGT_PLAYER, SGT_PROJECTILE, SGT_BILLBOARD, SGT_CARRIER}) {
        SCOPED_TRACE(type);
        const unsigned long long id = 0xFFFFFFFF00000000ULL + static_cast<unsigned long long>(type + 1);
        EXPECT_EQ(graph->getListOfType(type), nullptr);
        Witness* object = add(id, type);
        EXPECT_EQ(object->parent, graph);
        EXPECT_EQ(listed(type), Objects{object});
        EXPECT_EQ(graph->getOBjectById(static_cast<long long>(id)), object);
        Transform* const underKey = type == SGT_PLAYER ? object : nullptr;
        EXPECT_EQ(graph->getObjectByTCPid(object->getTCPid()), underKey);
        EXPECT_EQ(graph->getObjectByUDPid(object->getUDPid()), underKey);
    }
    EXPECT_EQ(graph->getOBjectById(42), nullptr);
}

TEST_F(Scene, ParentsAreUpdatedBeforeTheirChildrenAndChildrenInOrder)
{
    Witness* first = add(1, SGT_CARRIER);
    add(2, SGT_CARRIER);
    add(11, SGT_NONE, first);
    add(12, SGT_NONE, first);
    graph->update(0.1F);
    EXPECT_EQ(Witness::updated, (std::vector<unsigned long long>{1, 11, 12, 2}));
}

TEST_F(Scene, ObjectsThatLeaveDuringTheUpdateStayUntilTheRemovalsAreApplied)
{
    Witness* leaver = add(1, SGT_PROJECTILE);
    Witness* stayer = add(2, SGT_PROJECTILE);
    leaver->leavesAtNextUpdate = true;
    graph->update(0.1F);
    EXPECT_EQ(Witness::updated, (std::vector<unsigned long long>{1, 2}));
    EXPECT_EQ(children(), (Objects{leaver, stayer}));
    EXPECT_EQ(graph->getOBjectById(1), leaver);
    graph->applyRemoveList();
    EXPECT_EQ(children(), Objects{stayer});
    EXPECT_EQ(listed(SGT_PROJECTILE), Objects{stayer});
    EXPECT_EQ(graph->getOBjectById(1), nullptr);
    EXPECT_EQ(Witness::destroyed, 1);
}

TEST_F(Scene, AnObjectQueuedTwiceIsDestroyedOnceAndLeavesTheListNamedFirst)
{
    Witness* object = add(1, SGT_PLAYER);
    std::list<Transform*> other = {object};
    graph->addToRemoveList(object);
    graph->addToRemoveList(object);
    graph->addToRemoveList(&other, object);
    graph->applyRemoveList();
    EXPECT_EQ(Witness::destroyed, 1);
    EXPECT_EQ(other.size(), 1U);
    EXPECT_TRUE(children().empty());
    graph->applyRemoveList();
    EXPECT_EQ(Witness::destroyed, 1);
}

TEST_F(Scene, ObjectsLeaveOnlyTheListTheyWereQueuedFor)
{
    Witness* first = add(1, SGT_PLAYER);
    Witness* second = add(2, SGT_PLAYER);
    std::list<Transform*> other = {first, second};
    graph->addToRemoveList(&other, first);
    graph->children.remove(first);
    graph->addToRemoveList(second);
    graph->applyRemoveList();
    EXPECT_EQ(other, std::list<Transform*>{second});
    EXPECT_EQ(Witness::destroyed, 2);
}

TEST_F(Scene, AListWhoseObjectsAllLeftIsEmptyAndThePlayersKeysAreGone)
{
    Witness* player = add(1, SGT_PLAYER);
    void* const tcpKey = player->getTCPid();
    const long long udpKey = player->getUDPid();
    graph->addToRemoveList(player);
    graph->applyRemoveList();
    ASSERT_NE(graph->getListOfType(SGT_PLAYER), nullptr);
    EXPECT_TRUE(graph->getListOfType(SGT_PLAYER)->empty());
    EXPECT_EQ(graph->getObjectByTCPid(tcpKey), nullptr);
    EXPECT_EQ(graph->getObjectByUDPid(udpKey), nullptr);
}

TEST_F(Scene, AnObjectWithoutATypeStaysInItsListAfterItsRemoval)
{
    Witness* object = add(1, SGT_NONE);
    Witness* player = add(2, SGT_PLAYER);
    graph->addToRemoveList(object);
    graph->addToRemoveList(player);
    graph->applyRemoveList();
    EXPECT_EQ(graph->getOBjectById(1), nullptr);
    EXPECT_TRUE(children().empty());
    EXPECT_EQ(listed(SGT_NONE), Objects{object});
    EXPECT_TRUE(listed(SGT_PLAYER).empty());
}

TEST_F(Scene, AReusedIdNamesTheLaterObjectUntilEitherIsDestroyed)
{
    for (const bool destroyTheLater : {false, true}) {
        Witness* earlier = add(7, SGT_CARRIER);
        Witness* later = add(7, SGT_CARRIER);
        EXPECT_EQ(graph->getOBjectById(7), later);
        graph->addToRemoveList(destroyTheLater ? later : earlier);
        graph->applyRemoveList();
        EXPECT_EQ(graph->getOBjectById(7), nullptr);
        graph->addToRemoveList(destroyTheLater ? earlier : later);
        graph->applyRemoveList();
        EXPECT_TRUE(children().empty());
    }
}

TEST_F(Scene, ManyRemovalsInAnyOrderLeaveTheOthersInPlaceAndInOrder)
{
    std::mt19937 random(4711);
    Objects expected;
    for (unsigned int id = 1; id <= 300; ++id) {
        expected.push_back(add(id, SceneGraphType(random() % 4)));
    }
    while (!expected.empty()) {
        Objects leaving = expected;
        std::shuffle(leaving.begin(), leaving.end(), random);
        leaving.resize(std::min<std::size_t>(leaving.size(), 1 + random() % 60));
        std::vector<unsigned long long> goneIds;
        for (Transform* object : leaving) {
            goneIds.push_back(object->id);
            expected.erase(std::find(expected.begin(), expected.end(), object));
            graph->addToRemoveList(object);
        }
        graph->applyRemoveList();

        ASSERT_EQ(children(), expected);
        for (int type = SGT_PLAYER; type <= SGT_CARRIER; ++type) {
            Objects ofType;
            std::copy_if(expected.begin(), expected.end(), std::back_inserter(ofType),
                         [=](const Transform* t) { return t->type == type; });
            ASSERT_EQ(listed(type), ofType);
        }
        for (const unsigned long long id : goneIds) {
            ASSERT_EQ(graph->getOBjectById(static_cast<long long>(id)), nullptr);
        }
        for (Transform* object : expected) {
            ASSERT_EQ(graph->getOBjectById(static_cast<long long>(object->id)), object);
        }
    }
    EXPECT_EQ(Witness::destroyed, 300);
}
