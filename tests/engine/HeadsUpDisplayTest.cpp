#include "scene/General.h"
#include "scene/Player.h"
#include "scene/TestCube.h"
#include "tests/engine/FreshWorld.h"

#include <chrono>
#include <limits>
#include <thread>

namespace {

// Where the texts stand is compared where a whole frame is, in tests/end_to_end.
class Display : public FreshWorld
{
protected:
    Display() { glRecorder.deliver(4, 0xFF0000, 40, 20); }

    // The frame rate.
    std::string draw()
    {
        controller->hud();
        drawn = glRecorder.take("glColor3f|RenderText");
        const std::size_t end = drawn.find('\n') + 1;
        const std::string rate = drawn.substr(0, end);
        drawn.erase(0, end);
        return rate;
    }

    Player* addOwnShip()
    {
        auto* ship = new Player(5ULL, false, 100);
        graph->attach(ship);
        controller->thisPlayerID = 5;
        return ship;
    }

    std::string drawn;  // the colours and texts behind the frame rate
    std::string text = "TTF_RenderText_Blended 255 255 255 ";
};

}  // namespace

TEST_F(Display, ShowsOnlyTheFrameRateWithoutAnOwnShip)
{
    // found under 0, the id before the welcome
    graph->attach(new TestCube(0, true, true));
    for (const long long id : {0LL, 99LL}) {
        controller->thisPlayerID = id;
        draw();
        EXPECT_EQ(drawn, "");
    }
}

TEST_F(Display, ShowsTheShipsLinesInTheirColours)
{
    Player* ship = addOwnShip();
    ship->velocity[0] = {3.0F, -4.0F, 0.0F};
    ship->score = -7;
    ship->position = {1.5F, -2.0F, 0.25F};
    ship->smoothPosition = {9.0F, 9.0F, 9.0F};
    General::getInstance()->redTeamScore = 12;
    draw();
    EXPECT_EQ(drawn, "glColor3f 1 1 1\n" + text + "speed: 5.00\nglColor3f 0 1 0\n" + text +
                         "health: 100.00%\nglColor3f 1 1 1\n" + text + "-7\nglColor3f 1 0 0\n" + text +
                         "12\nglColor3f 0 0 1\n" + text + "0\nglColor3f 1 1 1\n" + text +
                         "(1.500000,-2.000000,0.250000)\n");
}

TEST_F(Display, HealthTurnsRedBelowTwenty)
{
    const std::pair<float, std::string> cases[] = {{20.0F, "0 1 0\n" + text + "health: 20.00%\n"},
                                                   {19.99F, "1 0 0\n" + text + "health: 19.99%\n"}};
    Player* ship = addOwnShip();
    for (const auto& [health, line] : cases) {
        ship->health = health;
        draw();
        EXPECT_NE(drawn.find("glColor3f " + line), std::string::npos) << drawn;
    }
}

TEST_F(Display, APositionBeyondAllMeasureIsCutToTheBuffer)
{
    const float largest = std::numeric_limits<float>::max();
    addOwnShip()->position = {-largest, largest, -largest};
    draw();
    const std::size_t start = drawn.find("(-340282346638528859811704183484516925440.000000,340");
    EXPECT_EQ(drawn.size() - start, 100U) << drawn;  // 99 and the line's end
}

TEST_F(Display, TheFrameRateIsThatOfTheLastFrameAndInfiniteWithinAMillisecond)
{
    draw();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    const std::string rate = draw().substr(text.size());
    EXPECT_EQ(rate.find("fps: "), 0U) << rate;
    EXPECT_LE(std::stod(rate.substr(5)),
              20.5);  // as a slow machine may well need longer
    EXPECT_GT(std::stod(rate.substr(5)), 0.1);
    EXPECT_EQ(rate.size() - rate.find('.'), 4U) << rate;
    int frames = 0;
    while (draw() != text + "fps: inf\n" && frames < 200) {
        ++frames;
    }
    EXPECT_LT(frames, 200);
}
