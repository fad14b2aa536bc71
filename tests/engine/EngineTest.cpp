// Window, input and resources.
#include "engine/ModelLoader.h"
#include "engine/VTObject.h"
#include "tests/engine/FreshWorld.h"

#include <filesystem>
#include <tuple>

namespace {

std::string received;

// Notes events and whether the key counts as down; subscribes another one at the first.
struct Subscriber : VTObject
{
    explicit Subscriber(Subscriber* other = nullptr) : newcomer(other) {}
    void keyboardEvent(SDL_Event event) override
    {
        const SDLKey key = event.key.keysym.sym;
        received += (event.type == SDL_KEYDOWN ? '+' : '-') + std::to_string(key) +
                    (VT.inputHandler.isKeyPressed(key) ? "down" : "up") + (newcomer != nullptr ? "1 " : " ");
        if (newcomer != nullptr && VT.inputHandler.keyboardSubscribers.size() == 2) {
            VT.inputHandler.keyboardSubscribers.shrink_to_fit();  // so that the list moves
            VT.inputHandler.subscribeToKeyboardEvents(newcomer);
        }
    }

    Subscriber* newcomer;
};

using Engines = FreshWorld;
using EnginesDeathTest = FreshWorld;

}  // namespace

TEST_F(EnginesDeathTest, AFailureEndsTheProcessWithItsStatus)
{
    EXPECT_EXIT(VT.init(), testing::ExitedWithCode(2),
                "Couldn't set 800x600 OpenGL video mode: no such luck\nSDL_Quit");
    glRecorder.sdlInitResult = -1;
    EXPECT_EXIT(VT.init(), testing::ExitedWithCode(1), "Couldn't initialize SDL: no such luck\n");
    glRecorder.deliver(1, 0xFF, 4, 4);
    EXPECT_EXIT(resources->getTexture("grey.png"), testing::ExitedWithCode(255), "^$");
}

TEST_F(Engines, TheWindowMayFillTheScreen)
{
    glRecorder.deliver(4, 0xFF0000, 800, 600);
    VT.window.createSDLWindow(640, 480, true);
    EXPECT_EQ(glRecorder.take("VideoMode|Viewport"),
              "SDL_SetVideoMode 640 480 0 2147483650\nglViewport 0 0 640 480\n");
}

TEST_F(Engines, KeysAreDownFromPressToRelease)
{
    Subscriber late, first(&late), second;
    VT.inputHandler.subscribeToKeyboardEvents(&first);
    VT.inputHandler.subscribeToKeyboardEvents(&second);
    glRecorder.send(SDL_KEYDOWN, SDLK_c);
    glRecorder.send(SDL_MOUSEMOTION);
    glRecorder.send(SDL_KEYUP, SDLK_c);
    VT.inputHandler.handleEvents();
    EXPECT_EQ(received, "+99down1 +99down -99up1 -99up -99up ") << "a newcomer misses the present event";
    EXPECT_FALSE(done);
}

TEST_F(Engines, TheQueueIsDrainedBehindAQuitEvent)
{
    glRecorder.send(SDL_QUIT);
    const auto unknown = static_cast<SDLKey>(511);
    for (const SDLKey symbol : {SDLK_UNDO, SDLK_LAST, unknown}) {  // the last of SDL's symbols, and beyond
        glRecorder.send(SDL_KEYDOWN, symbol);
    }
    VT.inputHandler.handleEvents();
    EXPECT_TRUE(done);
    EXPECT_TRUE(VT.inputHandler.isKeyPressed(SDLK_UNDO));
    EXPECT_FALSE(VT.inputHandler.isKeyPressed(SDLK_LAST) || VT.inputHandler.isKeyPressed(unknown));
}

TEST_F(Engines, MouseButtonsAndOffsetAreReadAtOnce)
{
    const std::tuple<Uint8, bool, bool, bool> cases[] = {
        {1, true, false, false}, {2, false, true, false}, {4, false, false, true}};
    for (const auto& [buttons, left, middle, right] : cases) {
        glRecorder.mouseButtons = buttons;
        EXPECT_EQ(VT.inputHandler.isLMouseDown(), left);
        EXPECT_EQ(VT.inputHandler.isMMouseDown(), middle);
        EXPECT_EQ(VT.inputHandler.isRMouseDown(), right);
    }
    glRecorder.mouseX = 410;
    glRecorder.mouseY = 280;
    EXPECT_EQ(VT.getMouseDiff(), std::pair(10.0F, -20.0F));
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
    const std::tuple<int, unsigned int, std::string> cases[] = {
        {3, 0x0000FF, "GL_RGB"}, {3, 0xFF0000, "GL_BGR"}, {4, 0x0000FF, "GL_RGBA"}, {4, 0xFF0000, "GL_BGRA"}};
    for (const auto& [bytesPerPixel, redMask, format] : cases) {
        glRecorder.deliver(bytesPerPixel, redMask, 64, 32);
        resources->textures.clear();
        EXPECT_EQ(printedBy([&] { resources->precacheTexture("a.png"); }), "Loading: /there/a.png\n");
        EXPECT_EQ(printedBy([&] { resources->getTexture("a.png"); }), "");
        EXPECT_EQ(glRecorder.take("Mipmaps"),
                  script("gluBuild2DMipmaps GL_TEXTURE_2D " + std::to_string(bytesPerPixel) + " 64 32 " +
                         format + " GL_UNSIGNED_BYTE"));
    }
    VT.setSkyBox("a.png");
    VT.setSkyBox("b.png");
    EXPECT_EQ(VT.skybox->textureName, "b.png");
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
