// Damaged and senseless models and images: the client names the file and goes on.
#include "engine/ResourceManager.h"
#include "tests/network/Support.h"

#include <unistd.h>

#include <fstream>

TEST(BadFiles, AreNamed)
{
    const std::pair<std::string, std::string> files[] = {
        // a PNG of 30,000 by 30,000 pixels up to where its pixels begin
        {{"\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0u0\0\0u0\b\2\0\0\0\xE9\x45o\xED\0\0\0\0IDAT", 41},
         "With Faces: 0\n"},
        {"v 0 0 0\nv 1 0 0\nv 1", "With Faces: 0\n"},
        {"v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 9\n", "OBJ: vertex index out of range\n"},
        {"v nan 0 0\nv inf 0 0\nv 0 1e99 0\nf 1 2 3\n", "With Faces: 1\n"}};
    ResourceManager resources;
    resources.resourceFolder = testing::TempDir() + std::to_string(getpid());
    const std::string path = resources.resourceFolder + "bad.obj";
    const std::string asImage = "Loading: " + path + "\nError could not load file " + path + '\n';
    for (const auto& [content, asModel] : files) {
        std::ofstream(path) << content;
        EXPECT_EQ(printedBy([&] { resources.loadModel("bad.obj"); }), "Loading model: bad.obj\n" + asModel);
        EXPECT_EQ(printedBy([&] { resources.loadTexture("bad.obj"); }), asImage);
    }
    unlink(path.c_str());
}
