// What the client's drawing requires of the art. tests/pictures shows its looks.
#include "engine/SurfacePtr.h"

#include <SDL_image.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <gtest/gtest.h>
#include <assimp/Importer.hpp>

#include <string>

// Sides that are no powers of two would be rescaled at every start; other depths end the client.
TEST(Art, LoadsInTheFormatAndSizeThatTheClientDraws)
{
    const std::pair<std::string, int> pictures[] = {
        {"skybox.png", 3}, {"texture-white.png", 3}, {"carrier-texture-white.png", 3}, {"BOOOM.png", 4}};
    for (const auto& [name, bytesPerPixel] : pictures) {
        const SurfacePtr loaded(IMG_Load((VANTOR_TESTS "../Resources/" + name).c_str()));
        ASSERT_TRUE(loaded != nullptr && loaded->format->BytesPerPixel == bytesPerPixel) << name;
        const int w = loaded->w, h = loaded->h;
        EXPECT_TRUE(w >= 256 && h >= 256 && (w & (w - 1)) == 0 && (h & (h - 1)) == 0) << name;
    }
    // with their lengths
    const std::pair<std::string, float> models[] = {
        {"fighter.obj", 78}, {"shot.obj", 100}, {"carrier.obj", 350}};
    for (const auto& [name, length] : models) {
        Assimp::Importer importer;
        const aiScene* scene =
            importer.ReadFile(VANTOR_TESTS "../Resources/" + name, aiProcess_GenBoundingBoxes);
        ASSERT_TRUE(scene != nullptr && scene->mNumMeshes == 1) << importer.GetErrorString();
        const aiAABB& box = scene->mMeshes[0]->mAABB;
        EXPECT_NEAR(box.mMax.z - box.mMin.z, length, length / 10) << name;
    }
}
