// What the client's drawing takes for granted of the art, and what the art may cost.
#include <SDL_image.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <gtest/gtest.h>
#include <assimp/Importer.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

const std::string folder = VANTOR_RESOURCES;

bool isPowerOfTwo(int n)
{
    return n > 0 && (n & (n - 1)) == 0;
}

class Image
{
public:
    explicit Image(const std::string& name) : surface(IMG_Load((folder + name).c_str()), SDL_FreeSurface)
    {
        if (surface == nullptr) {
            throw std::runtime_error(name + ": " + SDL_GetError());
        }
    }

    int width() const { return surface->w; }
    int height() const { return surface->h; }
    int depth() const { return surface->format->BytesPerPixel; }

    int at(int x, int y, int channel) const
    {
        const auto* bytes = static_cast<const unsigned char*>(surface->pixels);
        return bytes[y * surface->pitch + x * depth() + channel];
    }

private:
    std::unique_ptr<SDL_Surface, void (*)(SDL_Surface*)> surface;
};

struct Model
{
    explicit Model(const std::string& name)
    {
        const aiScene* scene = importer.ReadFile(folder + name, aiProcess_Triangulate);
        if (scene == nullptr || scene->mNumMeshes != 1) {
            throw std::runtime_error(name + ": " + importer.GetErrorString());
        }
        mesh = scene->mMeshes[0];
        std::tie(low, high) = boundsOf(0);
        for (unsigned int f = 1; f < mesh->mNumFaces; ++f) {
            const auto [l, h] = boundsOf(f);
            low = {std::min(low.x, l.x), std::min(low.y, l.y), std::min(low.z, l.z)};
            high = {std::max(high.x, h.x), std::max(high.y, h.y), std::max(high.z, h.z)};
        }
    }

    std::pair<aiVector3D, aiVector3D> boundsOf(unsigned int face) const
    {
        const unsigned int* corners = mesh->mFaces[face].mIndices;
        const auto bounds = [&](float aiVector3D::*axis) {
            return std::minmax({mesh->mVertices[corners[0]].*axis, mesh->mVertices[corners[1]].*axis,
                                mesh->mVertices[corners[2]].*axis});
        };
        const auto x = bounds(&aiVector3D::x);
        const auto y = bounds(&aiVector3D::y);
        const auto z = bounds(&aiVector3D::z);
        return {{x.first, y.first, z.first}, {x.second, y.second, z.second}};
    }

    Assimp::Importer importer;
    const aiMesh* mesh = nullptr;
    aiVector3D low, high;
};

// The mean difference of the pixels on both sides of a border between two cells: column `x` and the next.
double stepAcross(const Image& image, int x, int firstRow, int rows)
{
    int sum = 0;
    for (int y = firstRow; y < firstRow + rows; ++y) {
        for (int channel = 0; channel < 3; ++channel) {
            sum += std::abs(image.at(x, y, channel) - image.at((x + 1) % image.width(), y, channel));
        }
    }
    return sum / (3.0 * rows);
}

}  // namespace

// Other sizes would be rescaled at every start, other depths end the client.
TEST(Art, PicturesAreOfSizesAndDepthsThatTheClientUploadsAsTheyAre)
{
    const struct
    {
        const char* name;
        int depth;
    } pictures[] = {
        {"skybox.png", 3}, {"texture-white.png", 3}, {"carrier-texture-white.png", 3}, {"BOOOM.png", 4}};
    for (const auto& picture : pictures) {
        const Image image(picture.name);
        EXPECT_TRUE(isPowerOfTwo(image.width()) && isPowerOfTwo(image.height())) << picture.name;
        EXPECT_EQ(image.depth(), picture.depth) << picture.name;
    }
}

TEST(Art, SkyCellsAreLargeAndTheSideFacesMeetWithoutASeam)
{
    const Image sky("skybox.png");
    const int cell = sky.width() / 4;
    EXPECT_GE(cell, 512);
    EXPECT_GE(sky.height() / 3, 512);
    for (int face = 1; face <= 4; ++face) {
        const int border = face * cell - 1;
        const double within = stepAcross(sky, border - 8, sky.height() / 3 + 1, sky.height() / 3 - 2);
        EXPECT_LT(stepAcross(sky, border, sky.height() / 3 + 1, sky.height() / 3 - 2), 2 * within + 1)
            << face;
    }
}

// The last pixel of a row is blended with the first: anything there would draw lines around explosions.
TEST(Art, ExplosionsAreSolidWithinAndVanishAtTheirBorder)
{
    const Image explosion("BOOOM.png");
    const int last = explosion.width() - 1;
    for (int i = 0; i <= last; ++i) {
        const auto border = {explosion.at(i, 0, 3), explosion.at(i, last, 3), explosion.at(0, i, 3),
                             explosion.at(last, i, 3)};
        EXPECT_EQ(std::max(border), 0) << i;
    }
    EXPECT_EQ(explosion.at(last / 2, last / 2, 3), 255);
}

// Only sparks are sharp: a disc cut out hard would have twice as many steps as this.
TEST(Art, ExplosionsHaveASoftEdge)
{
    const Image explosion("BOOOM.png");
    int hardSteps = 0;
    for (int y = 0; y < explosion.height(); ++y) {
        for (int x = 1; x < explosion.width(); ++x) {
            hardSteps += std::abs(explosion.at(x, y, 3) - explosion.at(x - 1, y, 3)) > 64 ? 1 : 0;
        }
    }
    EXPECT_LT(hardSteps, explosion.height() * explosion.width() / 300);
}

// Team colours are multiplied in: a tint would spoil one team's, dark plating (the upper half) both.
TEST(Art, HullTexturesAreLightGrays)
{
    for (const char* name : {"texture-white.png", "carrier-texture-white.png"}) {
        const Image image(name);
        long sum = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                sum += y < image.height() / 2 ? image.at(x, y, 0) : 0;
                ASSERT_TRUE(image.at(x, y, 0) == image.at(x, y, 1) && image.at(x, y, 1) == image.at(x, y, 2))
                    << name << ' ' << x << ' ' << y;
            }
        }
        EXPECT_GT(sum / (image.width() * image.height() / 2), 160) << name;
    }
}

TEST(Art, ModelsKeepTheirBudgetAndTheirSizeAsDrawn)
{
    const struct
    {
        const char* name;
        unsigned int triangles;
        float scale;  ///< as the client draws it
        float shortest, longest;
    } models[] = {{"fighter.obj", 1500, 0.05F, 3.0F, 4.0F},
                  {"shot.obj", 200, 0.01F, 1.0F, 1.5F},
                  {"carrier.obj", 12000, 1.0F, 200.0F, 400.0F}};
    for (const auto& wanted : models) {
        const Model model(wanted.name);
        EXPECT_LE(model.mesh->mNumFaces, wanted.triangles) << wanted.name;
        EXPECT_TRUE(model.mesh->HasNormals() && model.mesh->HasTextureCoords(0)) << wanted.name;
        const float length = (model.high.z - model.low.z) * wanted.scale;
        EXPECT_TRUE(length > wanted.shortest && length < wanted.longest) << wanted.name << ' ' << length;
    }
}

// Scaling lengthens normals by its inverse, and nothing normalises them again: the light would be all or
// none.
TEST(Art, HullNormalsPointAllRoundAndAreAsLongAsTheScaleTheyAreDrawnWith)
{
    for (const auto& [name, scale] : {std::pair("fighter.obj", 0.05F), std::pair("carrier.obj", 1.0F)}) {
        const Model model(name);
        std::vector<float> lengths;
        aiVector3D low, high;
        for (unsigned int i = 0; i < model.mesh->mNumVertices; ++i) {
            const aiVector3D normal = model.mesh->mNormals[i] / scale;
            lengths.push_back(normal.Length());
            low = {std::min(low.x, normal.x), std::min(low.y, normal.y), std::min(low.z, normal.z)};
            high = {std::max(high.x, normal.x), std::max(high.y, normal.y), std::max(high.z, normal.z)};
        }
        const auto middle = lengths.begin() + static_cast<std::ptrdiff_t>(lengths.size() / 2);
        std::nth_element(lengths.begin(), middle, lengths.end());
        EXPECT_NEAR(*middle, 1.0F, 0.5F) << name;
        EXPECT_LT(std::max({low.x, low.y, low.z}), -0.5F) << name;
        EXPECT_GT(std::min({high.x, high.y, high.z}), 0.5F) << name;
    }
}

// Ships start at the carrier's (0, 13, 130): nothing may stand there, and the runway lies ahead.
TEST(Art, TheCarrierLeavesRoomWhereShipsStart)
{
    const Model carrier("carrier.obj");
    const aiVector3D low(-8, 10, 115);
    const aiVector3D high(8, 20, 250);
    for (unsigned int f = 0; f < carrier.mesh->mNumFaces; ++f) {
        const auto [triangleLow, triangleHigh] = carrier.boundsOf(f);
        const bool apart = triangleHigh.x < low.x || triangleLow.x > high.x || triangleHigh.y < low.y ||
                           triangleLow.y > high.y || triangleHigh.z < low.z || triangleLow.z > high.z;
        ASSERT_TRUE(apart) << f;
    }
    EXPECT_GT(carrier.high.z, 130.0F + 100.0F);
}
