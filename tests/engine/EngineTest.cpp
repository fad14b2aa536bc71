// Window, input and resources, and the calls of OpenGL and SDL behind the picture.
#include "GUIClient/drawGL.h"
#include "engine/ModelLoader.h"
#include "engine/OpenGL.h"
#include "scene/Billboard.h"
#include "scene/Player.h"
#include "scene/Projectile.h"
#include "scene/TestCube.h"
#include "tests/engine/FreshWorld.h"
#include "tests/network/FixedClock.h"

#include <filesystem>
#include <limits>
#include <regex>
#include <tuple>

namespace {

constexpr float quarterTurn = 1.5707964F;

class Drawing : public FreshWorld
{
protected:
    Drawing() { glRecorder.deliver(4, 0xFF0000, 40, 20); }

    // The display's colours and texts, without the rest of the calls.
    std::string display()
    {
        controller->hud();
        return std::regex_replace(glRecorder.take("glColor3f|RenderText"),
                                  std::regex("TTF_RenderText_Blended 255 255 255 |glColor3f "), "");
    }

    FixedClock clock{1000};
};

std::string received;

// Notes presses and releases, and whether the key counts as down. Subscribes itself once more at the first.
struct Subscriber : VTObject
{
    void keyboardEvent(SDL_Event event) override
    {
        received += event.type == SDL_KEYDOWN ? '+' : '-';
        received += VT.inputHandler.isKeyPressed(event.key.keysym.sym) ? "down " : "up ";
        if (received == "+down ") {
            VT.inputHandler.subscribeToKeyboardEvents(this);
        }
    }
};

using Engines = FreshWorld;
using EnginesDeathTest = FreshWorld;

}  // namespace

TEST_F(Drawing, StartAndFrameMakeTheGoldenCalls)
{
    resources->models = {{"carrier.obj", 101}, {"fighter.obj", 102}, {"shot.obj", 103}};
    VT.init();
    controller->init();
    EXPECT_EQ(glRecorder.take(), golden("engine/golden/start.txt"));

    controller->update(1.0F);  // the frame sends nothing
    controller->hud();
    timer.getTimeDiff();  // and takes no time, for the display and for the scene
    VT.window.createSDLWindow(640, 480, true);
    EXPECT_EQ(glRecorder.take("VideoMode|Viewport"),
              "SDL_SetVideoMode 640 480 0 2147483650\nglViewport 0 0 640 480\n");
    glRecorder.mouseX = 360;
    glRecorder.mouseY = 220;
    auto* ship = new Player(0ULL, true, 100);
    graph->attach(ship);
    ship->smoothPosition = {10.0F, 20.0F, 30.0F};
    ship->velocity[0] = {3.0F, -4.0F, 0.0F};
    ship->score = -7;
    general->redTeamScore = 12;
    ship->smoothOrientation = Quaternion::FromAxisAngle(quarterTurn, {0.0F, 1.0F, 0.0F});
    auto* shot = new Projectile(7);
    graph->attach(shot);
    shot->lifetime = -1.0F;  // leaves the scene before it is drawn
    shot = new Projectile(8);
    graph->attach(shot);
    auto* explosion = new Billboard(9, {1.0F, 2.0F, 3.0F});
    graph->attach(explosion);
    explosion->scale(2.0F, 3.0F, 4.0F);
    explosion->translate(1.0F, 5.0F, 6.0F);
    explosion->rotate(quarterTurn, {0.0F, 1.0F, 0.0F});
    explosion->rotate(quarterTurn, {1.0F, 0.0F, 0.0F});  // acts first: +y goes to +z and on to +x
    explosion->attach(new Transform(10));
    glRecorder.take();
    drawGL();
    EXPECT_EQ(glRecorder.take(), golden("engine/golden/frame.txt"));

    graph->idTable.clear();  // no object has the own id any more: the camera stays
    clock.set(0);
    drawGL();
    EXPECT_EQ(glRecorder.take("Translate.* 22 30$"), "glTranslatef 5 22 30\n");
    EXPECT_EQ(shot->lifetime, 20.0F) << "a frame never takes negative time";
}

TEST_F(Drawing, TheDisplayShowsTheRateOfTheLastFrameAndTheShip)
{
    graph->attach(new TestCube(0, true, true));  // found instead of a ship
    display();
    EXPECT_EQ(display(), "fps: inf\n") << "within one millisecond";
    clock.set(1050);
    EXPECT_EQ(display(), "fps: 20.00\n");
    clock.set(1066);
    EXPECT_EQ(display(), "fps: 62.50\n") << "without the frames before";

    auto* ship = new Player(0ULL, true, 100);
    graph->attach(ship);
    const std::pair<float, std::string> cases[] = {{20.0F, "\n0 1 0\nhealth: 20.00%"},
                                                   {19.99F, "\n1 0 0\nhealth: 19.99%"},
                                                   {std::nanf(""), "\n0 1 0\nhealth: nan%"}};
    for (const auto& [health, lines] : cases) {
        ship->health = health;
        EXPECT_NE(display().find(lines), std::string::npos) << lines;
    }
    const float largest = std::numeric_limits<float>::max();
    ship->position = {-largest, largest, -largest};
    const std::string lines = display();
    EXPECT_EQ(lines.size() - lines.find("(-34028234"), 100U) << "99 characters and the line's end";
}

TEST_F(Drawing, TheCameraTurnsAboutItsOwnAxes)
{
    // quarter turns: yaw, roll, pitch; a frame is drawn at each | and at the end
    const std::tuple<std::string, Vector3, Vector3> cases[] = {
        {"y", {1, 0, 0}, {0, 1, 0}},    {"r", {0, 0, 1}, {-1, 0, 0}},
        {"p", {0, 1, 0}, {0, 0, -1}},   {"yp", {0, 1, 0}, {-1, 0, 0}},  // within a frame the pitch acts first
        {"ry", {0, 1, 0}, {-1, 0, 0}},                                  // about the old up
        {"y|r|", {1, 0, 0}, {0, 0, 1}},
    };
    for (const auto& [turns, direction, up] : cases) {
        SCOPED_TRACE(turns);
        Camera camera;
        for (const char turn : turns + '|') {
            camera.yaw(turn == 'y' ? quarterTurn : 0.0F);
            camera.roll(turn == 'r' ? quarterTurn : 0.0F);
            camera.pitch(turn == 'p' ? quarterTurn : 0.0F);
            if (turn == '|') {
                camera.setCamera();
            }
        }
        expectNear(camera.direction, direction);
        expectNear(camera.up, up);
        expectNear(camera.orientation.rotate({0.0F, 1.0F, 0.0F}), up);
    }
}

TEST_F(EnginesDeathTest, AFailureEndsTheProcessWithItsStatus)
{
    EXPECT_EXIT(VT.init(), testing::ExitedWithCode(2),
                "Couldn't set 800x600 OpenGL video mode: no such luck\nSDL_Quit");
    glRecorder.sdlInitResult = -1;
    EXPECT_EXIT(VT.init(), testing::ExitedWithCode(1), "Couldn't initialize SDL: no such luck\n");
    glRecorder.deliver(1, 0xFF, 4, 4);
    EXPECT_EXIT(resources->getTexture("grey.png"), testing::ExitedWithCode(255), "^$");
}

TEST_F(Engines, KeysAndButtonsAreDownFromPressToRelease)
{
    Subscriber subscriber;
    VT.inputHandler.subscribeToKeyboardEvents(&subscriber);
    // of the keys, the last three are the last of SDL's symbols, and beyond
    glRecorder.events = {{SDL_QUIT, 0},     {SDL_KEYDOWN, 'c'},       {SDL_MOUSEMOTION, 'c'},
                         {SDL_KEYUP, 'c'},  {SDL_KEYDOWN, SDLK_UNDO}, {SDL_KEYDOWN, SDLK_LAST},
                         {SDL_KEYDOWN, 511}};
    VT.inputHandler.handleEvents();
    EXPECT_EQ(received, "+down -up -up +down +down +up +up +up +up ") << "the first press has one receiver";
    EXPECT_TRUE(done);
    for (const int buttons : {1, 2, 4}) {
        glRecorder.mouseButtons = static_cast<Uint8>(buttons);
        EXPECT_EQ(VT.inputHandler.isLMouseDown(), buttons == 1);
        EXPECT_EQ(VT.inputHandler.isMMouseDown(), buttons == 2);
        EXPECT_EQ(VT.inputHandler.isRMouseDown(), buttons == 4);
    }
}

TEST_F(Engines, ResourcesComeFromBesideTheProgram)
{
    EXPECT_EQ(printedBy([] { renewed<ResourceManager>(); }), "");
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe");
    EXPECT_EQ(ResourceManager::getInstance()->resourceFolder,
              program.parent_path().string() + "/Contents/Resources/");
}

TEST_F(Engines, ATextureIsUploadedOnceInItsPixelFormat)
{
    const std::tuple<int, unsigned int, int> cases[] = {
        {3, 0x0000FF, GL_RGB}, {3, 0xFF0000, GL_BGR}, {4, 0x0000FF, GL_RGBA}, {4, 0xFF0000, GL_BGRA}};
    for (const auto& [bytesPerPixel, redMask, format] : cases) {
        glRecorder.deliver(bytesPerPixel, redMask, 64, 32);
        resources->textures.clear();
        EXPECT_EQ(printedBy([&] { resources->precacheTexture("a.png"); }), "Loading: /there/a.png\n");
        EXPECT_EQ(printedBy([&] { resources->getTexture("a.png"); }), "");
        EXPECT_EQ(glRecorder.take("Mipmaps"), "gluBuild2DMipmaps 3553 " + std::to_string(bytesPerPixel) +
                                                  " 64 32 " + std::to_string(format) + " 5121\n");
    }
    VT.setSkyBox("a.png");
    VT.setSkyBox("b.png");
    EXPECT_EQ(glRecorder.take("IMG_Load"), "IMG_Load /there/b.png\n");
}

TEST_F(Engines, AMissingResourceIsReportedOnceAndDrawsNothing)
{
    const auto use = [&] {
        EXPECT_EQ(resources->getTexture("none.png"), 0U);
        resources->drawModel("none.obj");
        resources->drawText("x", "none.ttf", 0.0F, 0.0F);
        VT.drawSkybox({});
    };
    EXPECT_EQ(printedBy(use),
              "Loading: /there/none.png\nError could not load file /there/none.png\n"
              "Error Texture not loaded none.png\n"
              "Loading model: none.obj\nUnable to open file \"/there/none.obj\".\n"
              "Error Model not loaded none.obj\n"
              "Error:no such luck, could not open /there/none.ttf\nError Font not loaded none.ttf\n");
    EXPECT_EQ(printedBy(use), "");
    resources->RenderText(nullptr, "", 10.0, 30.5, 3.0, 10, 20, 30);  // a text that cannot be rendered
    EXPECT_EQ(
        glRecorder.take(),
        "IMG_Load /there/none.png\nTTF_OpenFont 20 /there/none.ttf\nTTF_RenderText_Blended 10 20 30 \n");
}

TEST_F(Engines, AModelBecomesAListOfTriangles)
{
    resources->resourceFolder = VANTOR_TESTS "engine/golden/";
    EXPECT_EQ(modelImportFlags, 0x800BU);
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(resources->loadModel("model.obj"), 1U); }),
              "Loading model: model.obj\nWith Faces: 3\n");
    EXPECT_EQ(glRecorder.take(), golden("engine/golden/model.txt"));
}
