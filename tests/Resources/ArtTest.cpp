// What the client's drawing takes for granted of the art, and what the art may cost. tests/pictures shows its
// looks.
#include <SDL_image.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <gtest/gtest.h>
#include <assimp/Importer.hpp>

#include <memory>
#include <string>
#include <tuple>

// Sides that are no powers of two would be rescaled at every start; other depths end the client. Textures
// repeat: anything at an explosion's border would draw lines around it.
TEST(Art, PicturesHaveTheirFormat)
{
    const std::pair<std::string, int> pictures[] = {// with bytes per pixel
                                                    {"skybox.png", 3},
                                                    {"texture-white.png", 3},
                                                    {"carrier-texture-white.png", 3},
                                                    {"BOOOM.png", 4}};
    for (const auto& [name, depth] : pictures) {
        SCOPED_TRACE(name);
        const std::unique_ptr<SDL_Surface, void (*)(SDL_Surface*)> loaded(
            IMG_Load((VANTOR_TESTS "../Resources/" + name).c_str()), SDL_FreeSurface);
        ASSERT_TRUE(loaded != nullptr && loaded->format->BytesPerPixel == depth);
        const int w = loaded->w, h = loaded->h;
        EXPECT_TRUE(w >= 256 && h >= 256 && (w & (w - 1)) == 0 && (h & (h - 1)) == 0) << w << ' ' << h;
        const auto* bytes = static_cast<const unsigned char*>(loaded->pixels);
        for (int i = 0; depth == 4 && i < w * h; ++i) {
            const bool isBorder = i % w == 0 || i % w == w - 1 || i / w == 0 || i / w == h - 1;
            ASSERT_TRUE(!isBorder || bytes[4 * i + 3] == 0) << i;
        }
    }
}

// Models turn around their origin; the client draws them with `scale`.
TEST(Art, ModelsHaveTheirSizeAndPlace)
{
    // triangles; length and middle, scaled
    const std::tuple<std::string, unsigned int, float, float, aiVector3D> models[] = {
        {"fighter.obj", 1500, 0.05F, 3.9F, {0, 0.4F, 0.6F}},
        {"shot.obj", 200, 0.01F, 1, {0, 0, 0}},
        {"carrier.obj", 12000, 1, 350, {0, 21, 101}}};
    for (const auto& [name, triangles, scale, length, place] : models) {
        SCOPED_TRACE(name);
        Assimp::Importer importer;
        const aiScene* scene = importer.ReadFile(VANTOR_TESTS "../Resources/" + name,
                                                 aiProcess_Triangulate | aiProcess_GenBoundingBoxes);
        ASSERT_TRUE(scene != nullptr && scene->mNumMeshes == 1) << importer.GetErrorString();
        const aiMesh& mesh = *scene->mMeshes[0];
        EXPECT_TRUE(mesh.HasNormals() && mesh.HasTextureCoords(0));
        EXPECT_LE(mesh.mNumFaces, triangles);
        EXPECT_NEAR((mesh.mAABB.mMax.z - mesh.mAABB.mMin.z) * scale, length, length * 0.1F);
        EXPECT_LT(((mesh.mAABB.mMax + mesh.mAABB.mMin) * (0.5F * scale) - place).Length(), length * 0.04F);
    }
}
