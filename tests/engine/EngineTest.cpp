// Window, input and resources.
#include "engine/ModelLoader.h"
#include "engine/OpenGL.h"
#include "engine/VTObject.h"
#include "tests/engine/FreshWorld.h"

#include <filesystem>
#include <tuple>

namespace {

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
