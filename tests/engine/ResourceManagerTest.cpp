#include "engine/ResourceManager.h"

#include "tests/engine/FreshWorld.h"
#include "tests/engine/GLRecorder.h"

#include <SDL_opengl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <functional>
#include <string>

namespace {

class Resources : public FreshWorld
{
protected:
    Resources() { manager->resourceFolder = "/there/"; }

    std::string printedBy(const std::function<void()>& action)
    {
        testing::internal::CaptureStdout();
        action();
        return testing::internal::GetCapturedStdout();
    }

    // Loads the model from a file of its own, and forgets the file.
    unsigned int loadModel(const std::string& lines)
    {
        const std::string name = "model" + std::to_string(getpid()) + ".obj";
        manager->resourceFolder = testing::TempDir();
        std::ofstream(manager->resourceFolder + name) << lines;
        const unsigned int list = manager->loadModel(name);
        std::remove((manager->resourceFolder + name).c_str());
        return list;
    }

    ResourceManager* manager = ResourceManager::getInstance();
};

using ResourcesDeathTest = Resources;

}  // namespace

TEST_F(Resources, LieInTheFolderBesideTheProgram)
{
    manager->setupResourceFolder();
    const std::string& folder = manager->resourceFolder;
    const std::string end = "/Contents/Resources/";
    ASSERT_GT(folder.size(), end.size());
    EXPECT_EQ(folder.substr(folder.size() - end.size()), end);
    EXPECT_EQ(access(folder.substr(0, folder.size() - end.size()).c_str(), X_OK), 0) << folder;
}

TEST_F(Resources, TexturesAreUploadedInTheirOwnPixelFormat)
{
    const struct
    {
        int bytesPerPixel;
        unsigned int redMask;
        std::string format;
    } cases[] = {
        {3, 0x0000FF, "GL_RGB"}, {3, 0xFF0000, "GL_BGR"}, {4, 0x0000FF, "GL_RGBA"}, {4, 0xFF0000, "GL_BGRA"}};
    for (const auto& c : cases) {
        glRecorder.reset();
        FakeImage image(c.bytesPerPixel, c.redMask, 64, 32);
        glRecorder.images["a.png"] = &image;
        EXPECT_EQ(manager->loadTexture("a.png"), 1U);
        EXPECT_TRUE(recordedExactly(
            R"(IMG_Load "/there/a.png"; glPushMatrix; glEnable GL_TEXTURE_2D; glEnable GL_BLEND;
            glBlendFunc GL_SRC_ALPHA GL_ONE_MINUS_SRC_ALPHA; glGenTextures 1; glBindTexture GL_TEXTURE_2D 1;
            glTexParameteri GL_TEXTURE_2D GL_TEXTURE_MIN_FILTER GL_LINEAR;
            glTexParameteri GL_TEXTURE_2D GL_TEXTURE_MAG_FILTER GL_LINEAR;
            gluBuild2DMipmaps GL_TEXTURE_2D )" +
            std::to_string(c.bytesPerPixel) + " 64 32 " + c.format +
            " GL_UNSIGNED_BYTE; glPopMatrix; SDL_FreeSurface"));
    }
}

TEST_F(ResourcesDeathTest, AnImageOfAnyOtherDepthEndsTheProcess)
{
    for (const int bytesPerPixel : {1, 2}) {
        FakeImage image(bytesPerPixel, 0xFF, 4, 4);
        glRecorder.images["grey.png"] = &image;
        EXPECT_EXIT(manager->getTexture("grey.png"), testing::ExitedWithCode(255), "^$");
    }
}

TEST_F(Resources, ATextureIsLoadedOnceAndThenKnown)
{
    FakeImage image(4, 0xFF, 4, 4);
    glRecorder.images["a.png"] = &image;
    glRecorder.nextName = 9;
    EXPECT_EQ(printedBy([&] { manager->precacheTexture("a.png"); }), "Loading: /there/a.png\n");
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(manager->getTexture("a.png"), 9U); }), "");
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(manager->loadTexture("a.png"), 10U); }), "Loading: /there/a.png\n");
    EXPECT_EQ(manager->getTexture("a.png"), 9U);
}

TEST_F(Resources, AMissingTextureIsReportedOnceAndNotTriedAgain)
{
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(manager->getTexture("none.png"), 0U); }),
              "Loading: /there/none.png\nError could not load file /there/none.png\n"
              "Error Texture not loaded none.png\n");
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(manager->getTexture("none.png"), 0U); }), "");
    EXPECT_EQ(glRecorder.named("IMG_Load").size(), 1U);
}

TEST_F(Resources, AMissingModelIsReportedOnceAndDrawsNothing)
{
    const std::string report = printedBy([&] { manager->drawModel("none.obj"); });
    EXPECT_EQ(report.find("Loading model: none.obj\n"), 0U) << report;
    EXPECT_NE(report.find("/there/none.obj"), std::string::npos) << report;
    EXPECT_NE(report.find("\nError Model not loaded none.obj\n"), std::string::npos) << report;
    EXPECT_EQ(printedBy([&] { manager->drawModel("none.obj"); }), "");
    EXPECT_TRUE(recordedExactly(""));
}

TEST_F(Resources, AModelBecomesAListOfTrianglesWithItsImageUpright)
{
    unsigned int list = 0;
    glRecorder.nextName = 5;
    const std::string printed = printedBy([&] {
        list = loadModel(
            "v 0 0 0\nv 1 0 0\nv 1 0.25 0\nv 0 0.25 0\nvt 0 0\nvt 1 0\nvt 1 0.25\nvt 0 0.25\nvn 0 0 1\n"
            "f 1/1/1 2/2/1 3/3/1 4/4/1\n");
    });
    EXPECT_EQ(list, 5U);
    EXPECT_NE(printed.find("With Faces: 2\n"), std::string::npos) << printed;
    EXPECT_EQ(glRecorder.named("glBegin"), Calls(2, call("glBegin", GL_TRIANGLES)));
    const Calls calls = glRecorder.take();
    ASSERT_EQ(calls.size(), 3U + 2U * (2U + 3U * 3U));
    EXPECT_EQ(calls[0], call("glGenLists", 1));
    EXPECT_EQ(calls[1], call("glNewList", 5, GL_COMPILE));
    EXPECT_EQ(calls.back(), call("glEndList"));
    for (std::size_t i = 2; i < calls.size(); ++i) {
        if (calls[i].name == "glVertex3f") {  // the file's texture coordinates are its x and y
            EXPECT_EQ(calls[i - 2], call("glNormal3f", 0, 0, 1));
            EXPECT_EQ(calls[i - 1], call("glTexCoord2d", calls[i].values[0], 1.0 - calls[i].values[1]));
        }
    }
}

TEST_F(Resources, AModelOfVerticesAloneIsDrawnFromThemAlone)
{
    printedBy([&] { EXPECT_NE(loadModel("v 0 0 0\nv 1 0 0\nv 1 1 0\nf 1 2 3\n"), 0U); });
    EXPECT_TRUE(recordedExactly(
        R"(glGenLists 1; glNewList 1 GL_COMPILE; glBegin GL_TRIANGLES; glVertex3f 0 0 0; glVertex3f 1 0 0;
        glVertex3f 1 1 0; glEnd; glEndList)"));
}

TEST_F(Resources, TextIsAQuadOfItsOwnPixelsUploadedAndDeleted)
{
    FakeImage rendered(4, 0xFF0000, 120, 23);
    glRecorder.renderedText = &rendered;
    glRecorder.font = reinterpret_cast<TTF_Font*>(manager);  // some font, never looked into
    manager->drawText("fps: 60.00", "a.ttf", 10.0F, 30.5F);
    EXPECT_TRUE(
        recordedExactly(R"(TTF_OpenFont 20 "/there/a.ttf"; TTF_RenderText_Blended 255 255 255 "fps: 60.00";
        glGenTextures 1; glBindTexture GL_TEXTURE_2D 1;
        glTexParameterf GL_TEXTURE_2D GL_TEXTURE_MIN_FILTER GL_LINEAR;
        glTexParameterf GL_TEXTURE_2D GL_TEXTURE_MAG_FILTER GL_LINEAR;
        glTexImage2D GL_TEXTURE_2D 0 GL_RGBA 120 23 0 GL_BGRA GL_UNSIGNED_BYTE; glBegin GL_QUADS;
        glTexCoord2d 0 0; glVertex3d 10 30.5 0; glTexCoord2d 1 0; glVertex3d 130 30.5 0;
        glTexCoord2d 1 1; glVertex3d 130 53.5 0; glTexCoord2d 0 1; glVertex3d 10 53.5 0; glEnd;
        glDeleteTextures 1 1; SDL_FreeSurface)"));
}

TEST_F(Resources, TextTakesItsColourAndDepthAndTextThatCannotBeRenderedIsNotDrawn)
{
    FakeImage rendered(4, 0xFF0000, 8, 8);
    glRecorder.renderedText = &rendered;
    manager->RenderText(nullptr, "x", 1.0, 2.0, 3.0, 10, 20, 30);
    EXPECT_EQ(glRecorder.named("TTF_RenderText_Blended"),
              (Calls{{"TTF_RenderText_Blended", {10, 20, 30}, "x"}}));
    EXPECT_EQ(glRecorder.named("glVertex3d")[2], call("glVertex3d", 9, 10, 3));
    glRecorder.reset();
    manager->RenderText(nullptr, "", 1.0, 2.0, 3.0, 10, 20, 30);
    EXPECT_EQ(glRecorder.calls.size(), 1U);
}

TEST_F(Resources, AMissingFontIsReportedOnceAndDrawsNothing)
{
    EXPECT_EQ(printedBy([&] { manager->drawText("x", "none.ttf", 0.0F, 0.0F); }),
              "Error:no such luck, could not open /there/none.ttf\nError Font not loaded none.ttf\n");
    EXPECT_EQ(printedBy([&] { manager->drawText("x", "none.ttf", 0.0F, 0.0F); }), "");
    EXPECT_EQ(glRecorder.calls.size(), 1U);
}
