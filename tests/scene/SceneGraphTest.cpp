#include "tests/engine/FreshWorld.h"

#include <tuple>

namespace {

using Objects = std::list<Transform*>;

std::string history;

// Notes its updates and its end; as a shot also how many shots are then still listed.
struct Noting : Transform
{
    Noting(unsigned long long newId, SceneGraphType newType) : Transform(newId) { type = newType; }
    ~Noting() override
    {
        history += 'x';
        if (type == SGT_PROJECTILE) {
            history += std::to_string(SceneGraph::getInstance()->getListOfType(type)->size());
        }
    }
    void realUpdate(float /*dt*/) override { history += std::to_string(id) + ' '; }
};

class Scene : public FreshWorld
{
protected:
    Scene() { history.clear(); }

    static Noting* add(unsigned long long id, SceneGraphType type,
                       Transform* parent = SceneGraph::getInstance())
    {
        auto* object = new Noting(id, type);
        parent->attach(object);
        return object;
    }
};

}  // namespace

TEST_F(Scene, FilesObjectsByTypeIdAndKeysUntilRemoval)
{
    for (const SceneGraphType type : {SGT_NONE, SGT_PLAYER, SGT_PROJECTILE, SGT_BILLBOARD, SGT_CARRIER}) {
        SCOPED_TRACE(type);
        const auto id = static_cast<long long>(type) - 0xFFFFFFFFLL;
        EXPECT_EQ(graph->getListOfType(type), nullptr);
        Noting* object = add(static_cast<unsigned long long>(id), type);
        const auto found = [&, tcpKey = object->getTCPid(), udpKey = object->getUDPid()] {
            return std::tuple<Transform*, Transform*, Transform*>(
                graph->getOBjectById(id), graph->getObjectByTCPid(tcpKey), graph->getObjectByUDPid(udpKey));
        };
        Noting* const underKey = type == SGT_PLAYER ? object : nullptr;
        EXPECT_EQ(*graph->getListOfType(type), Objects{object});
        EXPECT_EQ(found(), std::tuple(object, underKey, underKey));
        graph->addToRemoveList(object);
        graph->applyRemoveList();
        EXPECT_EQ(found(), std::tuple(nullptr, nullptr, nullptr));
        // an object without a type stays in its list
        EXPECT_EQ(*graph->getListOfType(type), type == SGT_NONE ? Objects{object} : Objects());
    }
}

TEST_F(Scene, UpdatesParentsFirstAndLeaversStayUntilApplied)
{
    Noting* leaver = add(1, SGT_CARRIER);
    Noting* stayer = add(2, SGT_CARRIER);
    add(12, SGT_NONE, add(11, SGT_NONE, leaver));
    graph->addToRemoveList(leaver);
    graph->update(1.0F);
    EXPECT_EQ(graph->getOBjectById(1), leaver);
    graph->applyRemoveList();
    EXPECT_EQ(graph->children, Objects{stayer});
    EXPECT_EQ(history, "1 11 12 2 xxx");
}

TEST_F(Scene, ALeaverLeavesOnlyTheFirstPlaceOfTheRightLists)
{
    Noting* carrier = add(9, SGT_CARRIER);
    Noting* first = add(1, SGT_PROJECTILE);
    Noting* second = add(2, SGT_PROJECTILE);
    Noting* third = add(3, SGT_PROJECTILE);
    graph->addTransformToType(second, SGT_PROJECTILE);
    graph->addTransformToType(second, SGT_CARRIER);
    Objects other = {nullptr, first, second, third, second};
    graph->addToRemoveList(first);
    graph->addToRemoveList(&other, first);  // queued already
    graph->addToRemoveList(&other, second);
    graph->applyRemoveList();
    EXPECT_EQ(*graph->getListOfType(SGT_PROJECTILE), (Objects{third, second}));
    EXPECT_EQ(*graph->getListOfType(SGT_CARRIER), (Objects{carrier, second}));
    EXPECT_EQ(graph->children, (Objects{carrier, second, third}));

    graph->addToRemoveList(third);
    graph->applyRemoveList();  // walks past the dead
    EXPECT_EQ(*graph->getListOfType(SGT_PROJECTILE), Objects{second});
    EXPECT_EQ(other, (Objects{nullptr, first, third, second}));
    EXPECT_EQ(history, "x3x2x1") << "one by one";
    graph->children.remove(second);  // it dangles there
}

TEST_F(Scene, AReusedIdNamesTheLaterObject)
{
    for (const bool destroyTheLater : {false, true}) {
        Noting* earlier = add(7, SGT_CARRIER);
        Noting* later = add(7, SGT_CARRIER);
        EXPECT_EQ(graph->getOBjectById(7), later);
        graph->addToRemoveList(destroyTheLater ? later : earlier);
        graph->applyRemoveList();
        EXPECT_EQ(graph->getOBjectById(7), nullptr) << "until either is destroyed";
    }
}
