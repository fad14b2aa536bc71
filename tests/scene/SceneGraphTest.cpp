#include "scene/SceneGraph.h"

#include "tests/engine/FreshWorld.h"

#include <algorithm>
#include <random>
#include <vector>

namespace {

using Objects = std::list<Transform*>;

std::string history;

// An object of any type that says when it is updated and when it is gone.
struct ProtocolChecker : Transform
{
    ProtocolChecker(unsigned long long newId, SceneGraphType newType) : Transform(newId) { type = newType; }
    ~ProtocolChecker() override { history += 'x'; }
    void realUpdate(float) override
    {
        history += std::to_string(id) + ' ';
        if (id == leaver) {
            SceneGraph::getInstance()->addToRemoveList(this);
        }
    }

    static constexpr unsigned long long leaver = 4242;
};

class Scene : public FreshWorld
{
protected:
    Scene() { history.clear(); }

    static ProtocolChecker* add(unsigned long long id, SceneGraphType type,
                                Transform* parent = SceneGraph::getInstance())
    {
        auto* object = new ProtocolChecker(id, type);
        parent->attach(object);
        return object;
    }
};

}  // namespace

TEST_F(Scene, EveryTypeIsFiledByIdAndListOnlyPlayersByTheirKeysUntilRemoved)
{
    for (const SceneGraphType type : {SGT_NONE, SGT_PLAYER, SGT_PROJECTILE, SGT_BILLBOARD, SGT_CARRIER}) {
        SCOPED_TRACE(type);
        const auto id = static_cast<long long>(type) - 0xFFFFFFFFLL;
        EXPECT_EQ(graph->getListOfType(type), nullptr);
        ProtocolChecker* object = add(static_cast<unsigned long long>(id), type);
        EXPECT_EQ(object->parent, graph);
        EXPECT_EQ(*graph->getListOfType(type), Objects{object});
        EXPECT_EQ(graph->getOBjectById(id), object);
        void* const tcpKey = object->getTCPid();
        const long long udpKey = object->getUDPid();
        Transform* const underKey = type == SGT_PLAYER ? object : nullptr;
        EXPECT_EQ(graph->getObjectByTCPid(tcpKey), underKey);
        EXPECT_EQ(graph->getObjectByUDPid(udpKey), underKey);

        graph->addToRemoveList(object);
        graph->applyRemoveList();
        EXPECT_EQ(graph->getOBjectById(id), nullptr);
        EXPECT_EQ(graph->getObjectByTCPid(tcpKey), nullptr);
        EXPECT_EQ(graph->getObjectByUDPid(udpKey), nullptr);
        // an object without a type stays in its list
        EXPECT_EQ(*graph->getListOfType(type), type == SGT_NONE ? Objects{object} : Objects());
    }
}

TEST_F(Scene, UpdatesParentsFirstAndKeepsThoseThatLeaveUntilTheRemovalsAreApplied)
{
    ProtocolChecker* leaver = add(ProtocolChecker::leaver, SGT_CARRIER);
    ProtocolChecker* stayer = add(2, SGT_CARRIER);
    add(11, SGT_NONE, leaver);
    add(12, SGT_NONE, leaver);
    graph->update(0.1F);
    EXPECT_EQ(history, "4242 11 12 2 ");
    EXPECT_EQ(graph->children, (Objects{leaver, stayer}));
    EXPECT_EQ(graph->getOBjectById(ProtocolChecker::leaver), leaver);
    graph->applyRemoveList();
    EXPECT_EQ(graph->children, Objects{stayer});
    EXPECT_EQ(history, "4242 11 12 2 xxx");
}

TEST_F(Scene, AnObjectQueuedTwiceIsDestroyedOnceAndLeavesOnlyTheListNamedFirst)
{
    ProtocolChecker* first = add(1, SGT_PLAYER);
    ProtocolChecker* second = add(2, SGT_PLAYER);
    Objects other = {first, second};
    graph->addToRemoveList(first);
    graph->addToRemoveList(&other, first);
    graph->addToRemoveList(&other, second);
    graph->applyRemoveList();
    graph->applyRemoveList();
    EXPECT_EQ(history, "xx");
    EXPECT_EQ(other, Objects{first});
    EXPECT_EQ(graph->children, Objects{second});
    graph->children.clear();  // it dangles there
}

TEST_F(Scene, AReusedIdNamesTheLaterObjectUntilEitherIsDestroyed)
{
    for (const bool destroyTheLater : {false, true}) {
        ProtocolChecker* earlier = add(7, SGT_CARRIER);
        ProtocolChecker* later = add(7, SGT_CARRIER);
        EXPECT_EQ(graph->getOBjectById(7), later);
        graph->addToRemoveList(destroyTheLater ? later : earlier);
        graph->applyRemoveList();
        EXPECT_EQ(graph->getOBjectById(7), nullptr);
    }
}

TEST_F(Scene, ManyRemovalsInAnyOrderLeaveTheOthersInPlaceAndInOrder)
{
    std::mt19937 random(4711);
    std::vector<Transform*> expected;
    for (unsigned int id = 1; id <= 300; ++id) {
        expected.push_back(add(id, SceneGraphType(random() % 4)));
    }
    while (!expected.empty()) {
        std::vector<Transform*> leaving = expected;
        std::shuffle(leaving.begin(), leaving.end(), random);
        leaving.resize(std::min<std::size_t>(leaving.size(), 1 + random() % 60));
        for (Transform* object : leaving) {
            expected.erase(std::find(expected.begin(), expected.end(), object));
            graph->addToRemoveList(object);
        }
        graph->applyRemoveList();

        ASSERT_EQ(graph->children, Objects(expected.begin(), expected.end()));
        ASSERT_EQ(graph->idTable.size(), expected.size());
        for (const SceneGraphType type : {SGT_PLAYER, SGT_PROJECTILE, SGT_BILLBOARD}) {
            Objects ofType = graph->children;
            ofType.remove_if([=](const Transform* t) { return t->type != type; });
            ASSERT_EQ(*graph->getListOfType(type), ofType);
        }
    }
    EXPECT_EQ(history, std::string(300, 'x'));
}
