// VTEntryPoint::hud(), the text over every frame.
#include "GUIClient/VTEntryPoint.h"
#include "engine/OpenGL.h"
#include "engine/ResourceManager.h"
#include "network/Timer.h"
#include "scene/General.h"
#include "scene/Player.h"
#include "scene/SceneGraph.h"

#include <cstdarg>
#include <cstdio>
#include <string>

namespace {

constexpr float lowHealth = 20.0F;  // hit points; less than this is shown in red

void white()
{
    glColor3f(1.0F, 1.0F, 1.0F);
}
void red()
{
    glColor3f(1.0F, 0.0F, 0.0F);
}
void green()
{
    glColor3f(0.0F, 1.0F, 0.0F);
}
void blue()
{
    glColor3f(0.0F, 0.0F, 1.0F);
}

// Formats one line of at most 99 characters and draws it. (x, y) are pixels from the window's top left
// corner.
__attribute__((format(printf, 3, 4))) void drawLine(float x, float y, const char* format, ...)
{
    static const std::string font = "arial.ttf";
    char text[100];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    ResourceManager::getInstance()->drawText(text, font, x, y);
}

void drawFrameRate()
{
    static std::int64_t lastTime = Timer::getCurrentTime();
    const std::int64_t now = Timer::getCurrentTime();
    const auto frameTime = static_cast<float>(now - lastTime);  // milliseconds; 0 shows as an infinite rate
    lastTime = now;
    drawLine(0.0F, 0.0F, "fps: %.2f", static_cast<double>(1.0F / frameTime * 1000.0F));
}

void drawShipLines(const Player& ship)
{
    white();
    drawLine(0.0F, 25.0F, "speed: %.2f", static_cast<double>(ship.velocity[0].length()));
    if (ship.health < lowHealth) {
        red();
    } else {
        green();
    }
    drawLine(0.0F, 50.0F, "health: %.2f%%", static_cast<double>(ship.health));
    white();
    drawLine(200.0F, 0.0F, "%d", ship.score);
    red();
    drawLine(200.0F, 25.0F, "%d", General::getInstance()->redTeamScore);
    blue();
    drawLine(200.0F, 50.0F, "%d", General::getInstance()->blueTeamScore);
    white();
    drawLine(250.0F, 0.0F, "%s", ship.position.toString().c_str());
}

}  // namespace

void VTEntryPoint::hud()
{
    drawFrameRate();
    // Before the server's welcome thisPlayerID is 0, a carrier's id. A carrier has no health or score to
    // show.
    if (const auto* ship = dynamic_cast<Player*>(SceneGraph::getInstance()->getOBjectById(thisPlayerID))) {
        drawShipLines(*ship);
    }
}
