#include "GUIClient/VTEntryPoint.h"
#include "scene/General.h"
#include "scene/Player.h"
#include "scene/SceneGraph.h"
#include "scene/TestCube.h"
#include "tests/engine/FreshWorld.h"
#include "tests/engine/GLRecorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

class Display : public FreshWorld
{
protected:
    Display() { glRecorder.font = reinterpret_cast<TTF_Font*>(this); }  // some font, never looked into

    // Each text drawn, the colour that tints it (none for the one current before), and where it is: "text|1 1
    // 1 |0 25".
    std::vector<std::string> draw()
    {
        glRecorder.renderedText = &rendered;
        glRecorder.take();
        VTEntryPoint::getInstance()->hud();
        std::vector<std::string> lines;
        std::ostringstream line, colour;
        for (const Call& made : glRecorder.take()) {
            if (made.name == "glColor3f") {
                colour.str("");
                std::copy(made.values.begin(), made.values.end(), std::ostream_iterator<double>(colour, " "));
            } else if (made.name == "TTF_RenderText_Blended") {
                line.str("");
                line << made.text << '|' << colour.str();
            } else if (made.name == "glVertex3d" && !line.str().empty()) {  // the first of four
                line << '|' << made.values[0] << ' ' << made.values[1];
                lines.push_back(line.str());
                line.str("");
            }
        }
        return lines;
    }

    Player* addOwnShip()
    {
        auto* ship = new Player(5ULL, false, 100);
        SceneGraph::getInstance()->attach(ship);
        VTEntryPoint::getInstance()->thisPlayerID = 5;
        return ship;
    }

    FakeImage rendered{4, 0xFF0000, 40, 20};
};

}  // namespace

TEST_F(Display, ShowsOnlyTheFrameRateWithoutAnOwnShip)
{
    SceneGraph::getInstance()->attach(
        new TestCube(0, true, true));  // found under 0, the id before the welcome
    for (const long long id : {0LL, 99LL}) {
        VTEntryPoint::getInstance()->thisPlayerID = id;
        const auto lines = draw();
        ASSERT_EQ(lines.size(), 1U);
        EXPECT_EQ(lines[0].substr(0, 5), "fps: ");
        EXPECT_EQ(lines[0].substr(lines[0].find('|')), "||0 0");
    }
}

TEST_F(Display, ShowsTheShipsLinesInTheirColoursAndPlaces)
{
    Player* ship = addOwnShip();
    ship->velocity[0] = {3.0F, -4.0F, 0.0F};
    ship->velocity[1] = ship->currentVelocity = {100.0F, 0.0F, 0.0F};
    ship->score = -7;
    ship->position = {1.5F, -2.0F, 0.25F};
    ship->smoothPosition = {9.0F, 9.0F, 9.0F};
    General::getInstance()->redTeamScore = 12;
    General::getInstance()->blueTeamScore = 0;
    std::vector<std::string> lines = draw();
    ASSERT_FALSE(lines.empty());
    lines.erase(lines.begin());
    EXPECT_EQ(lines, (std::vector<std::string>{"speed: 5.00|1 1 1 |0 25", "health: 100.00%|0 1 0 |0 50",
                                               "-7|1 1 1 |200 0", "12|1 0 0 |200 25", "0|0 0 1 |200 50",
                                               "(1.500000,-2.000000,0.250000)|1 1 1 |250 0"}));
}

TEST_F(Display, HealthTurnsRedBelowTwenty)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::pair<float, const char*> cases[] = {{20.0F, "health: 20.00%|0 1 0 |0 50"},
                                                   {19.99F, "health: 19.99%|1 0 0 |0 50"},
                                                   {-3.0F, "health: -3.00%|1 0 0 |0 50"},
                                                   {nan, "health: nan%|0 1 0 |0 50"}};
    Player* ship = addOwnShip();
    for (const auto& [health, line] : cases) {
        ship->health = health;
        EXPECT_EQ(draw().at(2), line);
    }
}

TEST_F(Display, APositionBeyondAllMeasureIsCutToTheBuffer)
{
    const float largest = std::numeric_limits<float>::max();
    addOwnShip()->position = {-largest, largest, -largest};
    const std::string line = draw().at(6);
    const std::string text = line.substr(0, line.find('|'));
    EXPECT_EQ(text.size(), 99U);
    EXPECT_EQ(text.substr(0, 52), "(-340282346638528859811704183484516925440.000000,340");
}

TEST_F(Display, TheFrameRateIsThatOfTheLastFrameAndInfiniteWithinAMillisecond)
{
    draw();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    const std::string afterAPause = draw().at(0);
    const double rate = std::strtod(afterAPause.c_str() + 5, nullptr);
    EXPECT_LE(rate, 20.5) << afterAPause;  // as a slow machine may well need longer
    EXPECT_GT(rate, 0.1) << afterAPause;
    EXPECT_EQ(afterAPause.find('|') - afterAPause.find('.'), 3U) << afterAPause;

    bool infinite = false;
    for (int i = 0; i < 200 && !infinite; ++i) {
        infinite = draw().at(0) == "fps: inf||0 0";
    }
    EXPECT_TRUE(infinite);
}
