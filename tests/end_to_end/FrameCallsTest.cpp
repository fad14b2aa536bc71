#include "tests/end_to_end/GameSession.h"
#include "tests/end_to_end/GlTrace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

namespace {

using namespace std::chrono_literals;
using Calls = std::vector<std::string>;

void append(Calls& calls, const Calls& more)
{
    calls.insert(calls.end(), more.begin(), more.end());
}

const Calls startUp = {
    "glDepthFunc GL_LESS",
    "glEnable GL_DEPTH_TEST",
    "glClearColor 0 0 0 1",
    "glViewport 0 0 800 600",
    "glMatrixMode GL_PROJECTION",
    "glLoadIdentity",
    // 60 degrees high, 4 to 3, from 1 to 10000
    "glMultMatrixd 1.299038 0 0 0  0 1.732051 0 0  0 0 -1.0002 -1  0 0 -2.0002 0",
    "glMatrixMode GL_MODELVIEW",
    "glEnable GL_COLOR_MATERIAL",
    "glEnable GL_LIGHTING",
    "glEnable GL_LIGHT0",
    "glEnable GL_LIGHT1",
    "glLightModelfv GL_LIGHT_MODEL_AMBIENT 0.5 0.5 0.5 1",
    "glLightfv GL_LIGHT0 GL_DIFFUSE 1 1 1 1",
    "glLightfv GL_LIGHT0 GL_POSITION -1 0 0 0",
    "glLightfv GL_LIGHT1 GL_DIFFUSE 0.5 0.5 0.5 1",
    "glLightfv GL_LIGHT1 GL_POSITION 0 1 0 0",
};

const std::string unturned = "glMultMatrixf 1 0 0 0  0 1 0 0  0 0 1 0  0 0 0 1";

// The viewer at (5, 22, 30), looking along +z.
const Calls cameraCalls = {
    "glClear GL_DEPTH_BUFFER_BIT|GL_COLOR_BUFFER_BIT",    "glLoadIdentity",          "glPushMatrix",
    "glMultMatrixf -1 0 0 0  0 1 0 0  0 0 -1 0  0 0 0 1", "glTranslated -5 -22 -30",
};

Calls skyCalls()
{
    // x, y, z of a vertex and u, v of its texel
    const Calls faces[6] = {
        {"5000 -5000 -5000 0.2507 0.3340333", "-5000 -5000 -5000 0.4993 0.3340333",
         "-5000 5000 -5000 0.4993 0.6659667", "5000 5000 -5000 0.2507 0.6659667"},
        {"5000 -5000 5000 0.0007 0.3340333", "5000 -5000 -5000 0.2493 0.3340333",
         "5000 5000 -5000 0.2493 0.6659667", "5000 5000 5000 0.0007 0.6659667"},
        {"-5000 -5000 5000 0.7507 0.3340333", "5000 -5000 5000 0.9993 0.3340333",
         "5000 5000 5000 0.9993 0.6659667", "-5000 5000 5000 0.7507 0.6659667"},
        {"-5000 -5000 -5000 0.5007 0.3340333", "-5000 -5000 5000 0.7493 0.3340333",
         "-5000 5000 5000 0.7493 0.6659667", "-5000 5000 -5000 0.5007 0.6659667"},
        {"-5000 5000 -5000 0.2507 0.6673667", "-5000 5000 5000 0.4993 0.9993", "5000 5000 5000 0.2507 0.9993",
         "5000 5000 -5000 0.4993 0.6673667"},
        {"-5000 -5000 -5000 0.4993 0.3326333", "-5000 -5000 5000 0.4993 0.0007",
         "5000 -5000 5000 0.2507 0.0007", "5000 -5000 -5000 0.2507 0.3326333"},
    };
    Calls calls = {"glPushMatrix",           "glPushAttrib GL_ENABLE_BIT",
                   "glEnable GL_TEXTURE_2D", "glDisable GL_LIGHTING",
                   "glDisable GL_BLEND",     "glColor4f 1 1 1 1",
                   "glTranslatef 5 22 30",   "glBindTexture GL_TEXTURE_2D $texture:sky"};
    for (const Calls& face : faces) {
        calls.emplace_back("glBegin GL_QUADS");
        for (const std::string& vertex : face) {
            const std::size_t texel = vertex.rfind(' ', vertex.rfind(' ') - 1);
            calls.push_back("glTexCoord2f" + vertex.substr(texel));
            calls.push_back("glVertex3f " + vertex.substr(0, texel));
        }
        calls.emplace_back("glEnd");
    }
    append(calls, {"glPopAttrib", "glPopMatrix"});
    return calls;
}

// One object of the scene: placed and turned, then drawn by its own calls.
Calls objectCalls(const std::string& place, const std::string& turn, const Calls& own)
{
    Calls calls = {"glPushMatrix", "glScalef 1 1 1", "glTranslatef " + place, turn};
    append(calls, own);
    calls.emplace_back("glPopMatrix");
    return calls;
}

Calls carrierCalls(const std::string& place, const std::string& colour)
{
    return objectCalls(place, unturned,
                       {"glPushMatrix", "glColor3f " + colour, "glTranslatef 0 -13 -130",
                        "glBindTexture GL_TEXTURE_2D $texture:carrier", "glCallList $list:carrier",
                        "glColor3f 1 1 1", "glPopMatrix"});
}

Calls sceneCalls()
{
    Calls children = carrierCalls("500 0 0", "1 0 0");
    append(children, carrierCalls("-500 0 0", "0 0 1"));
    append(children, objectCalls("10 20 30", "glMultMatrixf 0 0 -1 0  0 1 0 0  1 0 0 0  0 0 0 1",
                                 {"glPushMatrix", "glColor3f 0 0 1",
                                  "glBindTexture GL_TEXTURE_2D $texture:ship", "glScalef 0.05 0.05 0.05",
                                  "glCallList $list:fighter", "glColor3f 1 1 1", "glPopMatrix"}));
    append(children, objectCalls("10 20 90", unturned,
                                 {"glPushMatrix", "glDisable GL_TEXTURE_2D", "glColor3f 1 0 0",
                                  "glScalef 0.01 0.01 0.01", "glCallList $list:shot",
                                  "glEnable GL_TEXTURE_2D", "glPopMatrix"}));
    Calls calls = objectCalls("0 0 0", unturned, children);
    calls.emplace_back("glPopMatrix");
    return calls;
}

// The texture of a text is exactly as large as the quad that it is drawn on.
Calls textCalls(double x, double y, const GlCall& texture)
{
    const double right = x + std::stod(texture.at(4));
    const double bottom = y + std::stod(texture.at(5));
    const auto vertex = [](double vx, double vy) {
        return "glVertex3d " + std::to_string(vx) + " " + std::to_string(vy) + " 0";
    };
    return {"glGenTextures 1 *",
            "glBindTexture GL_TEXTURE_2D *",
            "glTexParameterf GL_TEXTURE_2D GL_TEXTURE_MIN_FILTER GL_LINEAR",
            "glTexParameterf GL_TEXTURE_2D GL_TEXTURE_MAG_FILTER GL_LINEAR",
            "glTexImage2D GL_TEXTURE_2D 0 GL_RGBA * * 0 GL_BGRA GL_UNSIGNED_BYTE *",
            "glBegin GL_QUADS",
            "glTexCoord2d 0 0",
            vertex(x, y),
            "glTexCoord2d 1 0",
            vertex(right, y),
            "glTexCoord2d 1 1",
            vertex(right, bottom),
            "glTexCoord2d 0 1",
            vertex(x, bottom),
            "glEnd",
            "glDeleteTextures 1 *"};
}

Calls displayCalls(const std::vector<GlCall>& frame)
{
    struct Line
    {
        std::string colour;
        double x, y;
    };
    const Line lines[] = {{"glColor4f 1 0 0 1", 0, 0},  {"glColor3f 1 1 1", 0, 25},
                          {"glColor3f 1 0 0", 0, 50},   {"glColor3f 1 1 1", 200, 0},
                          {"glColor3f 1 0 0", 200, 25}, {"glColor3f 0 0 1", 200, 50},
                          {"glColor3f 1 1 1", 250, 0}};
    std::vector<GlCall> textures;
    std::copy_if(frame.begin(), frame.end(), std::back_inserter(textures),
                 [](const GlCall& call) { return call.front() == "glTexImage2D"; });
    textures.resize(std::size(lines), GlCall(10, "0"));
    Calls calls = {"glMatrixMode GL_PROJECTION",
                   "glPushMatrix",
                   "glLoadIdentity",
                   "glOrtho 0 800 0 600 -1 1",
                   "glScalef 1 -1 1",
                   "glTranslatef 0 -600 0",
                   "glMatrixMode GL_MODELVIEW",
                   "glPushAttrib GL_ENABLE_BIT",
                   "glDisable GL_LIGHTING",
                   "glEnable GL_BLEND"};
    for (std::size_t i = 0; i < std::size(lines); ++i) {
        calls.push_back(lines[i].colour);
        append(calls, textCalls(lines[i].x, lines[i].y, textures[i]));
    }
    append(calls, {"glPopAttrib", "glMatrixMode GL_PROJECTION", "glPopMatrix", "glMatrixMode GL_MODELVIEW",
                   "glXSwapBuffers"});
    return calls;
}

// A blue ship that flies along +x with little health, so that the viewer sits 5 units beside it, and a red
// shot.
void playTheScene(GameSession& game)
{
    support::Ship own;
    own.id = GameSession::ownId;
    own.blueTeam = true;
    own.health = 5.0F;
    own.position = Vector3(10, 20, 30);
    own.orientation = Quaternion(std::sqrt(0.5F), 0, std::sqrt(0.5F), 0);
    game.join(own);
    game.server.sendTcp(support::shotInfo(8, false, Vector3(10, 20, 90)));
    std::this_thread::sleep_for(1500ms);  // until the ship has turned
}

}  // namespace

TEST(FrameCalls, StartUpAndAFrameMakeExactlyTheseCallsInThisOrder)
{
    support::requireProgram("apitrace", "apitrace");
    std::string folder = std::filesystem::temp_directory_path() / "vantor-trace-XXXXXX";
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    GameSession::Options options;
    options.wrapper = {"apitrace", "trace", "-o", folder + "/client.trace"};
    GameSession game(options);
    playTheScene(game);
    EXPECT_LT((game.server.lastSteering().orientation - Quaternion()).length(), 1e-4F)
        << "the view was turned";
    ASSERT_EQ(game.leave(), "status 0");

    const std::vector<GlCall> calls = readTrace(folder + "/client.trace");
    std::filesystem::remove_all(folder);
    ASSERT_GT(calls.size(), startUp.size());
    EXPECT_TRUE(
        matches({calls.begin(), calls.begin() + static_cast<std::ptrdiff_t>(startUp.size())}, startUp));
    const std::set<std::string> everEnabled = {"GL_BLEND",  "GL_COLOR_MATERIAL", "GL_DEPTH_TEST", "GL_LIGHT0",
                                               "GL_LIGHT1", "GL_LIGHTING",       "GL_TEXTURE_2D"};
    EXPECT_EQ(firstValues(calls, "glEnable"), everEnabled);

    const std::vector<GlCall> frame = lastFrame(calls);
    Calls expected = cameraCalls;
    append(expected, skyCalls());
    append(expected, sceneCalls());
    append(expected, displayCalls(frame));
    EXPECT_TRUE(matches(frame, expected));
}
