#include "scene/General.h"

#include "scene/SceneGraph.h"
#include "tests/engine/FreshWorld.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

namespace {

class StartingPoints : public FreshWorld
{
protected:
    void addPlayers(int count)
    {
        for (int i = 0; i < count; ++i) {
            auto* player = new Transform(static_cast<unsigned long long>(100 + i));
            player->type = SGT_PLAYER;
            SceneGraph::getInstance()->attach(player);
        }
    }

    General* general = General::getInstance();
};

}  // namespace

TEST_F(StartingPoints, AreFixedUnlessAModeIsChosen)
{
    for (const int mode : {2, 3, -1}) {
        if (mode != 2) {
            general->mode = mode;
        }
        EXPECT_EQ(general->blueStart(), Vector3(-500.0F, 0.0F, 0.0F));
        EXPECT_EQ(general->redStart(), Vector3(500.0F, 0.0F, 0.0F));
        addPlayers(3);
    }
    EXPECT_EQ(general->redTeamScore, 0);
    EXPECT_EQ(general->blueTeamScore, 0);
}

TEST_F(StartingPoints, TheGridGrowsWithTheNumberOfPlayers)
{
    const struct
    {
        int players, slot;
        Vector3 point;
    } cases[] = {
        {0, 5, {-250, -100, -100}},  // one cell
        {1, 0, {-250, -100, -100}},
        {1, 7, {-250, -100, -100}},
        {10, 1, {-83.33333F, -100, -100}},  // three columns
        {10, 2, {83.33333F, -100, -100}},
        {10, 3, {-250, -100, -100}},
        {25, 29, {150, 33.33333F, 0}},  // five columns, three rows, two layers: the last cell
        {25, 30, {-250, -100, -100}},
        {100,
         40,
         {-27.77778F, -33.33333F, -33.33333F}},  // nine columns, three rows, three layers: the middle
        {100, -1, {-305.55556F, -100, -100}},    // a signed remainder
    };
    int players = 0;
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.players << " players, slot " << c.slot);
        addPlayers(c.players - players);
        players = c.players;
        expectNear(general->getStartingPointWithin({}, {500.0F, 200.0F, 200.0F}, false, c.slot), c.point);
        const Vector3 centre(1.0F, 2.0F, 3.0F);
        expectNear(general->getStartingPointWithin(centre, {500.0F, 200.0F, 200.0F}, false, c.slot),
                   c.point + centre);
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

TEST_F(StartingPoints, RandomPointsLieInTheTeamsBox)
{
    general->mode = General::RANDOM;
    EXPECT_FALSE(general->seeded);
    for (int i = 0; i < 500; ++i) {
        const Vector3 blue = general->blueStart();
        const Vector3 red = general->redStart();
        EXPECT_LE(std::abs(blue.x + 500.0F), 0.5001F);
        EXPECT_LE(std::abs(red.x - 500.0F), 0.5001F);
        for (const float coordinate : {blue.y, blue.z, red.y, red.z}) {
            EXPECT_LE(std::abs(coordinate), 50.001F);
            EXPECT_NEAR(coordinate * 100.0F, std::round(coordinate * 100.0F), 0.01F);
        }
    }
    EXPECT_TRUE(general->seeded);
}

TEST_F(StartingPoints, TheSameSeedGivesTheSamePointDrawnInTheOrderOfTheAxes)
{
    std::srand(7);
    const float x = 5.0F - static_cast<float>(std::rand() % 400) / 100.0F + 2.0F;
    const float y = -static_cast<float>(std::rand() % 1000) / 100.0F + 5.0F;
    const float z = -static_cast<float>(std::rand() % 20000) / 100.0F + 100.0F;
    for (int i = 0; i < 2; ++i) {
        expectNear(general->getStartingPointWithin({5.0F, 0.0F, 0.0F}, {4.0F, 10.0F, 200.0F}, true, 7),
                   {x, y, z});
    }
    EXPECT_FALSE(general->seeded);
}

TEST_F(StartingPoints, ABoxWithoutAnyDepthStillHasAPoint)
{
    const Vector3 point = general->getStartingPointWithin({1.0F, 2.0F, 3.0F}, {0.0F, 0.009F, 1.0F}, true, 3);
    EXPECT_NEAR(point.x, 1.0F, 0.01F);
    EXPECT_NEAR(point.y, 2.0F, 0.01F);
}
