// The scene graph, game objects, their motion, and starting points.
#include "scene/Billboard.h"
#include "scene/Player.h"
#include "scene/Projectile.h"
#include "scene/SceneObjectFactory.h"
#include "scene/TestCube.h"
#include "tests/engine/FreshWorld.h"

#include <climits>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <tuple>

namespace {

using GameObjects = FreshWorld;
using Motion = FreshWorld;
using StartingPoints = FreshWorld;
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

TEST_F(Scene, AReusedIdNamesTheLaterObjectUntilEitherLeaves)
{
    Noting* earlier = add(7, SGT_CARRIER);
    Noting* later = add(7, SGT_CARRIER);
    EXPECT_EQ(graph->getOBjectById(7), later);
    graph->addToRemoveList(earlier);
    graph->applyRemoveList();
    EXPECT_EQ(graph->getOBjectById(7), nullptr);
}

TEST_F(GameObjects, LoadAheadAndACarrierNeverMoves)
{
    EXPECT_EQ(Player(1U, 2U, true, 100).id, 0x100000002ULL);
    TestCube carrier(7, true, true);
    EXPECT_EQ(resources->textures.count("texture-white.png"), 1U);
    EXPECT_EQ(resources->textures.count("carrier-texture-white.png"), 1U);
    EXPECT_EQ(resources->models.count("carrier.obj"), 1U);
    Vector3 elsewhere(100.0F, 0.0F, 0.0F);
    carrier.updateInfo(1000, elsewhere, carrier.orientation, true);
    carrier.update(1.0F);
    EXPECT_EQ(carrier.position, Vector3());
}

TEST_F(GameObjects, ShotsAndExplosionsLeaveAfterTheirTime)
{
    const Quaternion view = Quaternion::FromAxisAngle(1.0F, {0.0F, 1.0F, 0.0F});
    controller->setCameraOrientation(view);
    auto* explosion = new Billboard(1, {4.0F, 5.0F, 6.0F});
    controller->setCameraOrientation(Quaternion());
    auto* shot = new Projectile(2ULL);
    Vector3 start(3.0F, 0.0F, 0.0F);
    shot->updateInfo(0, start, shot->orientation, true);
    for (Transform* object : {static_cast<Transform*>(explosion), static_cast<Transform*>(shot)}) {
        graph->attach(object);
        object->currentVelocity = {8.0F, 0.0F, 0.0F};
    }
    const std::pair<float, std::size_t> frames[] = {{1.0F, 0}, {0.5F, 1}, {18.5F, 1}, {0.25F, 2}};
    for (const auto& [dt, leaving] : frames) {
        graph->update(dt);
        EXPECT_EQ(graph->removeList.size(), leaving);
    }
    EXPECT_EQ(shot->position.x, 165.0F) << "moves in its last frame too";
    EXPECT_EQ(explosion->position, Vector3(4.0F, 5.0F, 6.0F));
    EXPECT_EQ(explosion->orientation, view) << "faces the camera of its start";

    // with an orientation: i * (cos 90 + j sin 90), the angle in radians, and normalised
    expectNear(Billboard(3, {}, {0, 2, 0, 0}).orientation, {0, -0.4480736F, 0, 0.8939967F});
}

TEST_F(GameObjects, TheFactoryMakesExplosionsOnly)
{
    SceneObjectFactory* factory = SceneObjectFactory::getInstance();
    for (const long long id : {2LL, 3LL, static_cast<long long>(INT_MIN)}) {
        Transform* made = factory->create(SGT_BILLBOARD);
        EXPECT_EQ(made->type, SGT_BILLBOARD);
        factory->ship(made);
        EXPECT_EQ(graph->getOBjectById(id), made);
        factory->nextId = id == 3 ? INT_MAX : factory->nextId;  // the next id wraps
    }
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(factory->create(SGT_PROJECTILE), nullptr); }),
              "Error creating type of 1");
}

TEST_F(Motion, FollowsTheScenarios)
{
    std::unique_ptr<Transform> object;
    std::ifstream file(VANTOR_TESTS "scene/golden/motion.txt");
    int lines = 0;
    for (std::string line; std::getline(file, line); ++lines) {
        SCOPED_TRACE(line);
        std::istringstream words(line);
        std::string word, time;
        Vector3 numbers;
        float degrees = 0.0F;
        words >> word >> time >> numbers.x >> numbers.y >> numbers.z >> degrees;
        if (word == "object") {
            object = std::make_unique<Transform>(1ULL);
        } else if (word == "player") {
            object = std::make_unique<Player>(1ULL, true, 100);
        } else if (word == "reset" || word == "state") {
            Quaternion orientation = Quaternion::FromEuler(0.0F, degrees, 0.0F);
            object->updateInfo(static_cast<unsigned int>(std::stoul(time)), numbers, orientation,
                               word == "reset");
        } else if (word == "velocity") {
            expectNear(object->velocity[0], numbers);
            EXPECT_TRUE(object->velocity[0] * numbers >= 0.0F);
        } else if (word == "frame") {
            object->realUpdate(std::stof(time));
            const bool isPlayer = object->type == SGT_PLAYER;
            expectNear(isPlayer ? object->position : object->smoothPosition, numbers);
            EXPECT_TRUE(isPlayer || object->position == Vector3()) << "drawn where it was put";
            const Vector3 nose = object->orientation.rotate({0.0F, 0.0F, 1.0F});
            EXPECT_NEAR(std::atan2(nose.x, nose.z) * 57.29578F, degrees, 0.05F);
        }
    }
    EXPECT_GT(lines, 90);
}

TEST_F(StartingPoints, TheGridGrowsWithTheNumberOfPlayers)
{
    const Vector3 centre(1.0F, 2.0F, 3.0F), box(500.0F, 200.0F, 200.0F);
    const std::tuple<std::size_t, int, Vector3> cases[] = {
        {0, 5, {-250, -100, -100}},            // one cell
        {25, 29, {150, 33.33333F, 0}},         // five columns, three rows, two layers: the last cell
        {25, 30, {-250, -100, -100}},          // and the first again
        {100, -1, {-305.55556F, -100, -100}},  // nine by three by three, a signed remainder
    };
    for (const auto& [players, slot, point] : cases) {
        expectNear(General::gridPoint(centre, box, slot, players), point + centre);
    }
    // more layers than an int counts
    expectNear(General::gridPoint({}, {1.0F, 1e-20F, 1e10F}, 5, 1), {0.0F, 0.0F, -5e9F});
    // 65,537 by 65,537 cells in one layer are more than an int counts
    expectNear(General::gridPoint({}, {1.0F, 1.0F, 3.55264e-15F}, 140000, 1),
               {-0.363802F, -0.4999695F, 0.0F});
}

TEST_F(StartingPoints, TheTeamsTakeAlternateSlotsOfTheGrid)
{
    general->mode = General::GRID;
    for (unsigned int id = 1; id <= 25; ++id) {
        graph->attach(new Player(id, true, 100));
    }
    expectNear(general->redStart(), {50.0F, -100.0F, -100.0F});       // slot 3
    expectNear(general->blueStart(), {-50.0F, -100.0F, -100.0F});     // slot 2
    expectNear(general->blueStart(), {150.0F, -100.0F, -100.0F});     // slot 4
    expectNear(general->redStart(), {-250.0F, -33.33333F, -100.0F});  // slot 5
}

TEST_F(StartingPoints, RandomPointsLieInTheTeamsBoxes)
{
    general->mode = General::RANDOM;
    for (int i = 0; i < 500; ++i) {
        const Vector3 blue = general->blueStart() - General::blueBase;
        const Vector3 red = general->redStart() - General::redBase;
        EXPECT_FALSE(blue.y == red.y && blue.z == red.z) << "seeded anew within a second";
        for (const Vector3& point : {blue, red}) {
            EXPECT_TRUE(Vector3(-0.5001F, -50.001F, -50.001F) < point);
            EXPECT_TRUE(point < Vector3(0.5001F, 50.001F, 50.001F));
        }
    }
}

TEST_F(StartingPoints, ASeedGivesTheSamePointEachTime)
{
    std::srand(7);
    const float x = 5.0F - static_cast<float>(std::rand() % 400) / 100.0F + 2.0F;
    std::rand();  // a side without any depth draws like the others
    const float z = -static_cast<float>(std::rand() % 20000) / 100.0F + 100.0F;
    general->seeded = true;  // a seed of its own counts none the less
    for (int i = 0; i < 2; ++i) {
        expectNear(general->getStartingPointWithin({5, 2, 0}, {4, 0, 200}, true, 7), {x, 2.0F, z});
    }
}
