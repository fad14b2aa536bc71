#include "scene/General.h"

#include "tests/engine/FreshWorld.h"

#include <cmath>
#include <cstdlib>
#include <tuple>

namespace {

class StartingPoints : public FreshWorld
{
protected:
    void addPlayers(int count)
    {
        for (int id = 100; id < 100 + count; ++id) {
            auto* player = new Transform(static_cast<unsigned long long>(id));
            player->type = SGT_PLAYER;
            graph->attach(player);
        }
    }

    General* general = General::getInstance();
};

}  // namespace

TEST_F(StartingPoints, TheGridGrowsWithTheNumberOfPlayers)
{
    const std::tuple<int, int, Vector3> cases[] = {
        {0, 5, {-250, -100, -100}},           // one cell
        {25, 29, {150, 33.33333F, 0}},        // five columns, three rows, two layers: the last cell
        {0, 30, {-250, -100, -100}},          // and the first again
        {75, -1, {-305.55556F, -100, -100}},  // nine by three by three, a signed remainder
    };
    for (const auto& [newPlayers, slot, point] : cases) {
        addPlayers(newPlayers);
        const Vector3 centre(1.0F, 2.0F, 3.0F), box(500.0F, 200.0F, 200.0F);
        expectNear(general->getStartingPointWithin(centre, box, false, slot), point + centre);
    }
}

TEST_F(StartingPoints, TheTeamsTakeAlternateSlotsOfTheGrid)
{
    general->mode = General::GRID;
    addPlayers(25);
    expectNear(general->redStart(), {50.0F, -100.0F, -100.0F});       // slot 3
    expectNear(general->blueStart(), {-50.0F, -100.0F, -100.0F});     // slot 2
    expectNear(general->blueStart(), {150.0F, -100.0F, -100.0F});     // slot 4
    expectNear(general->redStart(), {-250.0F, -33.33333F, -100.0F});  // slot 5
}

TEST_F(StartingPoints, RandomPointsLieInTheTeamsBoxAndAreSeededOnce)
{
    general->mode = General::RANDOM;
    for (int i = 0; i < 500; ++i) {
        const Vector3 blue = general->blueStart();
        const Vector3 red = general->redStart();
        EXPECT_FALSE(blue.y == red.y && blue.z == red.z);  // as they were if seeded anew within a second
        EXPECT_LE(std::abs(blue.x + 500.0F), 0.5001F);
        EXPECT_LE(std::abs(red.x - 500.0F), 0.5001F);
        for (const float coordinate : {blue.y, blue.z, red.y, red.z}) {
            EXPECT_LE(std::abs(coordinate), 50.001F);
        }
    }
}

TEST_F(StartingPoints, TheSameSeedGivesTheSamePointDrawnInTheOrderOfTheAxes)
{
    std::srand(7);
    const float x = 5.0F - static_cast<float>(std::rand() % 400) / 100.0F + 2.0F;
    std::rand();  // a side without any depth draws like the others
    const float z = -static_cast<float>(std::rand() % 20000) / 100.0F + 100.0F;
    for (int i = 0; i < 2; ++i) {
        expectNear(general->getStartingPointWithin({5, 2, 0}, {4, 0, 200}, true, 7), {x, 2.0F, z});
    }
}
