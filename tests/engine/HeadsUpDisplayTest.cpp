#include "scene/General.h"
#include "scene/Player.h"
#include "scene/TestCube.h"
#include "tests/engine/FreshWorld.h"
#include "tests/network/FixedClock.h"

#include <limits>
#include <regex>

namespace {

// Where the texts stand is compared where a whole frame is, in tests/end_to_end.
class Display : public FreshWorld
{
protected:
    Display() { glRecorder.deliver(4, 0xFF0000, 40, 20); }

    // The colours and texts, without what all texts have in common.
    std::string drawn()
    {
        controller->hud();
        return std::regex_replace(glRecorder.take("glColor3f|RenderText"),
                                  std::regex("TTF_RenderText_Blended 255 255 255 |glColor3f "), "");
    }

    Player* addOwnShip()
    {
        auto* ship = new Player(5ULL, false, 100);
        graph->attach(ship);
        controller->thisPlayerID = 5;
        return ship;
    }

    FixedClock clock{1000};
};

}  // namespace

TEST_F(Display, ShowsOnlyTheLastFramesRateWithoutAnOwnShip)
{
    // found under 0, the id before the welcome
    graph->attach(new TestCube(0, true, true));
    drawn();
    for (const long long id : {0LL, 99LL}) {
        controller->thisPlayerID = id;
        EXPECT_EQ(drawn(), "fps: inf\n") << "within one millisecond";
    }
    clock.set(1050);
    EXPECT_EQ(drawn(), "fps: 20.00\n");
    clock.set(1066);
    EXPECT_EQ(drawn(), "fps: 62.50\n") << "that of the last frame alone";
}

TEST_F(Display, ShowsTheShipsLinesInTheirColoursAndHealthBelowTwentyInRed)
{
    Player* ship = addOwnShip();
    ship->velocity[0] = {3.0F, -4.0F, 0.0F};
    ship->score = -7;
    ship->position = {1.5F, -2.0F, 0.25F};
    ship->smoothPosition = {9.0F, 9.0F, 9.0F};
    General::getInstance()->redTeamScore = 12;
    drawn();
    for (const auto& [health, line] :
         {std::pair(20.0F, "0 1 0\nhealth: 20.00%\n"), std::pair(19.99F, "1 0 0\nhealth: 19.99%\n")}) {
        ship->health = health;
        EXPECT_EQ(drawn(), std::string("fps: inf\n1 1 1\nspeed: 5.00\n") + line +
                               "1 1 1\n-7\n1 0 0\n12\n0 0 1\n0\n1 1 1\n(1.500000,-2.000000,0.250000)\n");
    }
}

TEST_F(Display, APositionBeyondAllMeasureIsCutToTheBuffer)
{
    const float largest = std::numeric_limits<float>::max();
    addOwnShip()->position = {-largest, largest, -largest};
    const std::string lines = drawn();
    const std::size_t start = lines.find("(-340282346638528859811704183484516925440.000000,340");
    EXPECT_EQ(lines.size() - start, 100U) << lines;  // 99 and the line's end
}
