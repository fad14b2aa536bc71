// What the client tells OpenGL, as apitrace records it, is compared with the calls of a script: words in
// order, in which * stands for anything.
#include "tests/end_to_end/GameSession.h"

#include <gtest/gtest.h>

#include <fnmatch.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <regex>
#include <sstream>
#include <tuple>

using namespace std::chrono_literals;

namespace {

using Calls = std::vector<std::string>;

const std::string startUp = R"(
    glDepthFunc(GL_LESS) glEnable(GL_DEPTH_TEST) glClearColor(0,0,0,1) glViewport(0,0,800,600)
    glMatrixMode(GL_PROJECTION) glLoadIdentity() glMultMatrixd(1.299,0,0,0,0,1.7321,0,0,0,0,-1.0002,-1,0,0,-2.0002,0)
    glMatrixMode(GL_MODELVIEW)
    glEnable(GL_COLOR_MATERIAL) glEnable(GL_LIGHTING) glEnable(GL_LIGHT0) glEnable(GL_LIGHT1)
    glLightModelfv(GL_LIGHT_MODEL_AMBIENT,0.5,0.5,0.5,1)
    glLightfv(GL_LIGHT0,GL_DIFFUSE,1,1,1,1) glLightfv(GL_LIGHT0,GL_POSITION,-1,0,0,0)
    glLightfv(GL_LIGHT1,GL_DIFFUSE,0.5,0.5,0.5,1) glLightfv(GL_LIGHT1,GL_POSITION,0,1,0,0)
    glPushMatrix() glEnable(GL_TEXTURE_2D) glEnable(GL_BLEND) glBlendFunc(GL_SRC_ALPHA,GL_ONE_MINUS_SRC_ALPHA))";

// The viewer at (5, 22, 30), looking along +z.
const std::string cameraAndSky = R"(
    glClear(GL_DEPTH_BUFFER_BIT|GL_COLOR_BUFFER_BIT) glLoadIdentity() glPushMatrix()
    glMultMatrixf(-1,0,0,0,0,1,0,0,0,0,-1,0,0,0,0,1) glTranslated(-5,-22,-30)
    glPushMatrix() glPushAttrib(GL_ENABLE_BIT) glEnable(GL_TEXTURE_2D) glDisable(GL_LIGHTING)
    glDisable(GL_BLEND) glColor4f(1,1,1,1) glTranslatef(5,22,30) glBindTexture(GL_TEXTURE_2D,1)
    glBegin(GL_QUADS)
    glTexCoord2f(0.2507,0.334) glVertex3f(5000,-5000,-5000) glTexCoord2f(0.4993,0.334) glVertex3f(-5000,-5000,-5000)
    glTexCoord2f(0.4993,0.666) glVertex3f(-5000,5000,-5000) glTexCoord2f(0.2507,0.666) glVertex3f(5000,5000,-5000)
    glEnd() glBegin(GL_QUADS)
    glTexCoord2f(0.0007,0.334) glVertex3f(5000,-5000,5000) glTexCoord2f(0.2493,0.334) glVertex3f(5000,-5000,-5000)
    glTexCoord2f(0.2493,0.666) glVertex3f(5000,5000,-5000) glTexCoord2f(0.0007,0.666) glVertex3f(5000,5000,5000)
    glEnd() glBegin(GL_QUADS)
    glTexCoord2f(0.7507,0.334) glVertex3f(-5000,-5000,5000) glTexCoord2f(0.9993,0.334) glVertex3f(5000,-5000,5000)
    glTexCoord2f(0.9993,0.666) glVertex3f(5000,5000,5000) glTexCoord2f(0.7507,0.666) glVertex3f(-5000,5000,5000)
    glEnd() glBegin(GL_QUADS)
    glTexCoord2f(0.5007,0.334) glVertex3f(-5000,-5000,-5000) glTexCoord2f(0.7493,0.334) glVertex3f(-5000,-5000,5000)
    glTexCoord2f(0.7493,0.666) glVertex3f(-5000,5000,5000) glTexCoord2f(0.5007,0.666) glVertex3f(-5000,5000,-5000)
    glEnd() glBegin(GL_QUADS)
    glTexCoord2f(0.2507,0.6674) glVertex3f(-5000,5000,-5000) glTexCoord2f(0.4993,0.9993) glVertex3f(-5000,5000,5000)
    glTexCoord2f(0.2507,0.9993) glVertex3f(5000,5000,5000) glTexCoord2f(0.4993,0.6674) glVertex3f(5000,5000,-5000)
    glEnd() glBegin(GL_QUADS)
    glTexCoord2f(0.4993,0.3326) glVertex3f(-5000,-5000,-5000) glTexCoord2f(0.4993,0.0007) glVertex3f(-5000,-5000,5000)
    glTexCoord2f(0.2507,0.0007) glVertex3f(5000,-5000,5000) glTexCoord2f(0.2507,0.3326) glVertex3f(5000,-5000,-5000)
    glEnd() glPopAttrib() glPopMatrix())";

const std::string unturned = "1,0,0,0,0,1,0,0,0,0,1,0,0,0,0,1";

// One object of the scene: placed and turned, then drawn by its own calls. Textures and lists have the
// numbers in which they are made: sky, carrier, cube, ship; carrier, fighter, shot.
std::string object(const std::string& place, const std::string& turn, const std::string& own)
{
    return " glPushMatrix() glScalef(1,1,1) glTranslatef(" + place + ") glMultMatrixf(" + turn + ") " + own +
           " glPopMatrix()";
}

std::string carrier(const std::string& place, const std::string& colour)
{
    return object(place, unturned, "glPushMatrix() glColor3f(" + colour + R"() glTranslatef(0,-13,-130)
        glBindTexture(GL_TEXTURE_2D,2) glCallList(1) glColor3f(1,1,1) glPopMatrix())");
}

std::string scene()
{
    const std::string ship = object("10,20,30", "0,0,-1,0,0,1,0,0,1,0,0,0,0,0,0,1", R"(
        glPushMatrix() glColor3f(0,0,1) glBindTexture(GL_TEXTURE_2D,4) glScalef(0.05,0.05,0.05) glCallList(2)
        glColor3f(1,1,1) glPopMatrix())");
    const std::string shot = object("10,20,90", unturned, R"(
        glPushMatrix() glDisable(GL_TEXTURE_2D) glColor3f(1,0,0) glScalef(0.01,0.01,0.01) glCallList(3)
        glEnable(GL_TEXTURE_2D) glPopMatrix())");
    return object("0,0,0", unturned,
                  carrier("500,0,0", "1,0,0") + carrier("-500,0,0", "0,0,1") + ship + shot) +
           " glPopMatrix()";
}

// A text on a quad as large as its texture.
std::string text(const std::string& colour, int left, int top, int width, int height)
{
    const std::string x = std::to_string(left), right = std::to_string(left + width);
    const std::string y = std::to_string(top), bottom = std::to_string(top + height);
    return " glColor" + colour + R"( glGenTextures(1,*) glBindTexture(GL_TEXTURE_2D,*)
        glTexParameterf(GL_TEXTURE_2D,GL_TEXTURE_MIN_FILTER,GL_LINEAR)
        glTexParameterf(GL_TEXTURE_2D,GL_TEXTURE_MAG_FILTER,GL_LINEAR)
        glTexImage2D(GL_TEXTURE_2D,0,GL_RGBA,*,0,GL_BGRA,GL_UNSIGNED_BYTE,*) glBegin(GL_QUADS)
        glTexCoord2d(0,0) glVertex3d()" +
           x + "," + y + ",0) glTexCoord2d(1,0) glVertex3d(" + right + "," + y +
           ",0) glTexCoord2d(1,1) glVertex3d(" + right + "," + bottom + ",0) glTexCoord2d(0,1) glVertex3d(" +
           x + "," + bottom + ",0) glEnd() glDeleteTextures(1,*)";
}

std::string display(const Calls& frame)
{
    std::string calls = R"( glMatrixMode(GL_PROJECTION) glPushMatrix() glLoadIdentity()
        glOrtho(0,800,0,600,-1,1) glScalef(1,-1,1) glTranslatef(0,-600,0) glMatrixMode(GL_MODELVIEW)
        glPushAttrib(GL_ENABLE_BIT) glDisable(GL_LIGHTING) glEnable(GL_BLEND))";
    std::vector<std::pair<int, int>> sizes;
    for (const std::string& call : frame) {
        std::smatch size;
        if (std::regex_search(call, size, std::regex(R"(TexImage2D.* width = (\d+), height = (\d+))"))) {
            sizes.emplace_back(std::stoi(size[1]), std::stoi(size[2]));
        }
    }
    const std::tuple<const char*, int, int> lines[] = {
        {"4f(1,0,0,1)", 0, 0},  {"3f(1,1,1)", 0, 25},   {"3f(1,0,0)", 0, 50}, {"3f(1,1,1)", 200, 0},
        {"3f(1,0,0)", 200, 25}, {"3f(0,0,1)", 200, 50}, {"3f(1,1,1)", 250, 0}};
    sizes.resize(std::size(lines));
    auto size = sizes.begin();
    for (const auto& [colour, x, y] : lines) {
        calls += text(colour, x, y, size->first, size->second);
        ++size;
    }
    return calls +
           " glPopAttrib() glMatrixMode(GL_PROJECTION) glPopMatrix() glMatrixMode(GL_MODELVIEW) glXSwap*";
}

// "12 f(a = 1, b = {-0.0, 2.00004})" is "f(1,0,2)".
std::string plain(const std::string& recorded)
{
    std::string rest = std::regex_replace(recorded, std::regex(R"(^\d+ |\w+ = |[{}& ])"), "");
    std::ostringstream out;
    const std::regex number(R"(-?\d+\.\d+(e-\d+)?|-0\b)");
    for (std::smatch found; std::regex_search(rest, found, number); rest = found.suffix()) {
        out << found.prefix() << std::round(std::stod(found.str()) * 1e4) / 1e4 + 0.0;
    }
    return out.str() + rest;
}

// GL calls as the client made them, and buffer swaps; without questions, which change nothing and which SDL
// may ask too.
Calls recordedCalls(const std::string& file)
{
    std::istringstream dump(support::outputOf({"apitrace", "dump", "--color=never", file}));
    const std::regex wanted(R"(^\d+ gl(XSwap|(?!X|Get).).*\)$)");
    Calls calls;
    for (std::string line; std::getline(dump, line);) {
        if (std::regex_search(line, wanted)) {
            calls.push_back(line);
        }
    }
    return calls;
}

// The calls begin with those of the script.
void expectCalls(const Calls& calls, const std::string& script)
{
    std::istringstream words(script);
    std::string expected;
    for (auto call = calls.begin(); words >> expected; ++call) {
        ASSERT_NE(call, calls.end()) << "no " << expected;
        ASSERT_EQ(fnmatch(expected.c_str(), plain(*call).c_str(), 0), 0) << *call << " is not " << expected;
    }
}

// A blue ship that flies along +x with little health, so that the viewer sits 5 units beside it, and a red
// shot.
void playTheScene(GameSession& game)
{
    messages::ShipState own = lonelyShip();
    own.blueTeam = true;
    own.health = 5.0F;
    own.position = Vector3(10, 20, 30);
    own.orientation = Quaternion(std::sqrt(0.5F), 0, std::sqrt(0.5F), 0);
    game.join(own);
    game.server.sendTcp(messages::infoFrame(messages::ShotState{8, false, Vector3(10, 20, 90)}));
    std::this_thread::sleep_for(1500ms);  // until the ship has turned
    EXPECT_LT((game.server.lastSteering().orientation - Quaternion()).length(), 1e-4F);
    EXPECT_EQ(game.leave(), "status 0");
}

}  // namespace

TEST(FrameCalls, StartUpAndAFrameMakeExactlyTheseCallsInThisOrder)
{
    std::string folder = std::filesystem::temp_directory_path() / "vantor-trace-XXXXXX";
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    // SDL 1.2 on top of SDL 2 would add calls of its own, to scale the picture; the classic library has no
    // such variable.
    GameSession game(
        {}, {"env", "SDL12COMPAT_OPENGL_SCALING=0", "apitrace", "trace", "-o", folder + "/client.trace"});
    playTheScene(game);
    const Calls calls = recordedCalls(folder + "/client.trace");
    std::filesystem::remove_all(folder);

    const auto isSwap = [](const std::string& call) { return call.find("glXSwap") != std::string::npos; };
    ASSERT_GT(std::count_if(calls.begin(), calls.end(), isSwap), 1);
    const auto lastSwap = std::find_if(calls.rbegin(), calls.rend(), isSwap);
    const Calls frame(std::find_if(lastSwap + 1, calls.rend(), isSwap).base(), lastSwap.base());
    expectCalls(calls, startUp);
    expectCalls(frame, cameraAndSky + scene() + display(frame));
}
