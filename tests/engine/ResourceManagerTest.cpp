#include "engine/ResourceManager.h"

#include "tests/engine/FreshWorld.h"

#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <functional>
#include <tuple>

namespace {

class Resources : public FreshWorld
{
protected:
    Resources() { resources->resourceFolder = "/there/"; }

    static std::string printedBy(const std::function<void()>& action)
    {
        testing::internal::CaptureStdout();
        action();
        return testing::internal::GetCapturedStdout();
    }
};

using ResourcesDeathTest = Resources;

}  // namespace

TEST_F(Resources, TexturesAreUploadedOnceInTheirOwnPixelFormat)
{
    const std::tuple<int, unsigned int, std::string> cases[] = {
        {3, 0x0000FF, "GL_RGB"}, {3, 0xFF0000, "GL_BGR"}, {4, 0x0000FF, "GL_RGBA"}, {4, 0xFF0000, "GL_BGRA"}};
    for (const auto& [bytesPerPixel, redMask, format] : cases) {
        glRecorder.nextName = 9;
        glRecorder.deliver(bytesPerPixel, redMask, 64, 32);
        resources->textures.clear();
        EXPECT_EQ(printedBy([&] { resources->precacheTexture("a.png"); }), "Loading: /there/a.png\n");
        EXPECT_EQ(glRecorder.take(),
                  script(R"(IMG_Load /there/a.png; glPushMatrix; glEnable GL_TEXTURE_2D; glEnable GL_BLEND;
            glBlendFunc GL_SRC_ALPHA GL_ONE_MINUS_SRC_ALPHA; glGenTextures 1; glBindTexture GL_TEXTURE_2D 9;
            glTexParameteri GL_TEXTURE_2D GL_TEXTURE_MIN_FILTER GL_LINEAR;
            glTexParameteri GL_TEXTURE_2D GL_TEXTURE_MAG_FILTER GL_LINEAR; gluBuild2DMipmaps GL_TEXTURE_2D )" +
                         std::to_string(bytesPerPixel) + " 64 32 " + format +
                         " GL_UNSIGNED_BYTE; glPopMatrix; SDL_FreeSurface"));
        EXPECT_EQ(printedBy([&] { EXPECT_EQ(resources->getTexture("a.png"), 9U); }), "");
    }
}

TEST_F(ResourcesDeathTest, AnImageOfAnyOtherDepthEndsTheProcess)
{
    glRecorder.deliver(1, 0xFF, 4, 4);
    EXPECT_EXIT(resources->getTexture("grey.png"), testing::ExitedWithCode(255), "^$");
}

TEST_F(Resources, WhatIsMissingIsReportedOnceAndDrawsNothing)
{
    const auto use = [&] {
        EXPECT_EQ(resources->getTexture("none.png"), 0U);
        resources->drawModel("none.obj");
        resources->drawText("x", "none.ttf", 0.0F, 0.0F);
    };
    EXPECT_EQ(printedBy(use),
              "Loading: /there/none.png\nError could not load file /there/none.png\n"
              "Error Texture not loaded none.png\n"
              "Loading model: none.obj\nUnable to open file \"/there/none.obj\".\n"
              "Error Model not loaded none.obj\n"
              "Error:no such luck, could not open /there/none.ttf\nError Font not loaded none.ttf\n");
    EXPECT_EQ(printedBy(use), "");
    EXPECT_EQ(glRecorder.take(), "IMG_Load /there/none.png\nTTF_OpenFont 20 /there/none.ttf\n");
}

TEST_F(Resources, AModelBecomesAListOfTrianglesWithItsImageUpright)
{
    const std::string name = "model" + std::to_string(getpid()) + ".obj";
    resources->resourceFolder = testing::TempDir();
    // a quad, and a triangle without normals and texture coordinates
    std::ofstream(resources->resourceFolder + name)
        << "v 0 0 0\nv 1 0 0\nv 1 0.25 0\nv 0 0.25 0\nvt 0 0\nvt 1 0\nvt 1 0.25\nvt 0 0.25\nvn 0 0 1\n"
           "o quad\nf 1/1/1 2/2/1 3/3/1 4/4/1\no bare\nf 1 2 3\n";
    glRecorder.nextName = 5;
    EXPECT_EQ(resources->loadModel(name), 5U);
    std::remove((resources->resourceFolder + name).c_str());
    EXPECT_EQ(glRecorder.take(), script(R"(glGenLists 1; glNewList 5 GL_COMPILE; glBegin GL_TRIANGLES;
        glNormal3f 0 0 1; glTexCoord2d 0 1; glVertex3f 0 0 0; glNormal3f 0 0 1; glTexCoord2d 1 1;
        glVertex3f 1 0 0; glNormal3f 0 0 1; glTexCoord2d 1 0.75; glVertex3f 1 0.25 0; glEnd;
        glBegin GL_TRIANGLES; glNormal3f 0 0 1; glTexCoord2d 0 1; glVertex3f 0 0 0;
        glNormal3f 0 0 1; glTexCoord2d 1 0.75; glVertex3f 1 0.25 0;
        glNormal3f 0 0 1; glTexCoord2d 0 0.75; glVertex3f 0 0.25 0; glEnd;
        glBegin GL_TRIANGLES; glVertex3f 0 0 0; glVertex3f 1 0 0; glVertex3f 1 0.25 0; glEnd; glEndList)"));
}

// The quad of a text that can is compared in tests/end_to_end.
TEST_F(Resources, ATextThatCannotBeRenderedIsNotDrawn)
{
    resources->RenderText(nullptr, "", 10.0, 30.5, 3.0, 10, 20, 30);
    EXPECT_EQ(glRecorder.take(), "TTF_RenderText_Blended 10 20 30 \n");
}
