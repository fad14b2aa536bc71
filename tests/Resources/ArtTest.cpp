// What the client's drawing takes for granted of the art, and what the art may cost.
#include <SDL_image.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <gtest/gtest.h>
#include <assimp/Importer.hpp>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>

namespace {

const std::string folder = VANTOR_RESOURCES;

using Image = std::unique_ptr<SDL_Surface, void (*)(SDL_Surface*)>;

Image load(const std::string& name)
{
    return {IMG_Load((folder + name).c_str()), SDL_FreeSurface};
}

int at(const SDL_Surface& image, int x, int y, int channel)
{
    const auto* bytes = static_cast<const unsigned char*>(image.pixels);
    return bytes[y * image.pitch + x * image.format->BytesPerPixel + channel];
}

struct Line
{
    double u0, v0, u1, v1;  ///< texture coordinates of its ends
};

// The mean difference, of 255, between two lines of a picture that are seen as one.
double seam(const SDL_Surface& image, const Line& a, const Line& b)
{
    const int samples = 1000;
    double sum = 0;
    for (int i = 0; i < 3 * samples; ++i) {
        const double t = (i / 3 + 0.5) / samples;
        const auto on = [&](const Line& line) {
            return at(image, static_cast<int>((line.u0 + (line.u1 - line.u0) * t) * image.w),
                      static_cast<int>((line.v0 + (line.v1 - line.v0) * t) * image.h), i % 3);
        };
        sum += std::abs(on(a) - on(b));
    }
    return sum / (3 * samples);
}

}  // namespace

// Sides that are no powers of two would be rescaled at every start; other depths end the client. Hulls are
// gray and light, for team colours are multiplied in. Textures repeat: anything at an explosion's border
// would draw lines around it.
TEST(Art, PicturesHaveTheirFormatAndBrightness)
{
    const struct
    {
        const char* name;
        int depth;
        bool gray;
        double begin, end, mean;  ///< rows, of 1, and the least mean of their last channel, of 255
    } pictures[] = {{"skybox.png", 3, false, 1 / 3.0, 2 / 3.0, 15},
                    {"texture-white.png", 3, true, 0, 0.5, 180},
                    {"carrier-texture-white.png", 3, true, 0, 0.5, 180},
                    {"BOOOM.png", 4, false, 0.25, 0.75, 200}};
    for (const auto& wanted : pictures) {
        SCOPED_TRACE(wanted.name);
        const Image loaded = load(wanted.name);
        ASSERT_TRUE(loaded != nullptr && loaded->format->BytesPerPixel == wanted.depth);
        const SDL_Surface& image = *loaded;
        for (const int side : {image.w, image.h}) {
            EXPECT_TRUE(side >= 256 && (side & (side - 1)) == 0) << side;
        }
        double sum = 0;
        double count = 0;
        for (int i = 0; i < image.w * image.h; ++i) {
            const int x = i % image.w;
            const int y = i / image.w;
            const auto channel = [&](int k) { return at(image, x, y, k); };
            const bool isBorder = x % (image.w - 1) == 0 || y % (image.h - 1) == 0;
            ASSERT_TRUE(!wanted.gray || (channel(0) == channel(1) && channel(1) == channel(2))) << i;
            ASSERT_TRUE(wanted.depth == 3 || !isBorder || channel(3) == 0) << i;
            if (y >= wanted.begin * image.h && y < wanted.end * image.h) {
                sum += channel(wanted.depth - 1);
                ++count;
            }
        }
        EXPECT_GT(sum / count, wanted.mean);
    }
}

// The coordinates are the client's. Its cube shows the top cell's diagonals at the left and right border.
TEST(Art, TheFacesOfTheSkyMeetWithoutASeam)
{
    const Image sky = load("skybox.png");
    ASSERT_NE(sky, nullptr);
    const double u[] = {0.0007, 0.2493, 0.2507, 0.4993, 0.5007, 0.7493, 0.7507, 0.9993};
    const double v[] = {0.0007, 0.3326333, 0.3340333, 0.6659667, 0.6673667, 0.9993};
    const struct
    {
        double u0, u1, next;  ///< a side face's ends, and where the one after it begins
        Line top, bottom;     ///< what the other two faces show at its upper and lower end
    } sides[] = {
        {u[0], u[1], u[2], {u[2], v[5], u[3], v[4]}, {u[2], v[0], u[2], v[1]}},
        {u[2], u[3], u[4], {u[3], v[4], u[2], v[4]}, {u[2], v[1], u[3], v[1]}},
        {u[4], u[5], u[6], {u[2], v[4], u[3], v[5]}, {u[3], v[1], u[3], v[0]}},
        {u[6], u[7], u[0], {u[3], v[5], u[2], v[5]}, {u[3], v[0], u[2], v[0]}},
    };
    for (const auto& side : sides) {
        EXPECT_LT(seam(*sky, {side.u1, v[2], side.u1, v[3]}, {side.next, v[2], side.next, v[3]}), 2)
            << side.u0;
        EXPECT_LT(seam(*sky, {side.u0, v[3], side.u1, v[3]}, side.top), 2) << side.u0;
        EXPECT_LT(seam(*sky, {side.u0, v[2], side.u1, v[2]}, side.bottom), 2) << side.u0;
    }
}

// Models turn around their origin; fighters fly with the nose (+z) ahead. The client draws a model with
// `scale` and never normalises: normals of other lengths would be lit fully or not at all. The last normal of
// each model lights explosions too, which have none.
TEST(Art, ModelsHaveTheirSizePlaceAndLight)
{
    const struct
    {
        const char* name;
        unsigned int triangles;
        float scale, length;  ///< scaled, as is the middle
        aiVector3D middle;
        float scaledNormals;  ///< the least share of normals that are about as long as `scale`
    } models[] = {{"fighter.obj", 1500, 0.05F, 3.9F, {0, 0.4F, 0.6F}, 0.5F},
                  {"shot.obj", 200, 0.01F, 1, {0, 0, 0}, 0},
                  {"carrier.obj", 12000, 1, 350, {0, 21, 101}, 0.5F}};
    for (const auto& wanted : models) {
        SCOPED_TRACE(wanted.name);
        Assimp::Importer importer;
        const aiScene* scene =
            importer.ReadFile(folder + wanted.name, aiProcess_Triangulate | aiProcess_GenBoundingBoxes);
        ASSERT_TRUE(scene != nullptr && scene->mNumMeshes == 1) << importer.GetErrorString();
        const aiMesh& mesh = *scene->mMeshes[0];
        ASSERT_TRUE(mesh.HasNormals() && mesh.HasTextureCoords(0));
        EXPECT_LE(mesh.mNumFaces, wanted.triangles);
        const aiVector3D extent = (mesh.mAABB.mMax - mesh.mAABB.mMin) * wanted.scale;
        const aiVector3D middle = (mesh.mAABB.mMax + mesh.mAABB.mMin) * (0.5F * wanted.scale);
        EXPECT_NEAR(extent.z, wanted.length, wanted.length * 0.1F);
        EXPECT_LT((middle - wanted.middle).Length(), wanted.length * 0.04F);

        float scaled = 0;
        float light = 0;
        for (unsigned int i = 0; i < mesh.mNumVertices; ++i) {
            const aiVector3D normal = mesh.mNormals[i] / wanted.scale;
            scaled += std::abs(normal.Length() - 1) < 0.5F ? 1.0F : 0.0F;
            light += std::clamp(0.5F + 0.5F * normal.y, 0.5F, 1.0F);
        }
        EXPECT_GE(scaled, wanted.scaledNormals * static_cast<float>(mesh.mNumVertices));
        EXPECT_GT(light, 0.75F * static_cast<float>(mesh.mNumVertices)) << "too little light from above";
        const aiVector3D last = mesh.mNormals[mesh.mFaces[mesh.mNumFaces - 1].mIndices[2]];
        EXPECT_TRUE(last.x < -0.7F && last.y < -0.7F);
    }
}

// Ships start at the carrier's (0, 13, 130) and fly along +z.
TEST(Art, NothingStandsOnTheCarriersRunway)
{
    Assimp::Importer importer;
    const aiScene* scene = importer.ReadFile(folder + "carrier.obj", aiProcess_Triangulate);
    ASSERT_NE(scene, nullptr);
    const aiMesh& mesh = *scene->mMeshes[0];
    for (unsigned int f = 0; f < mesh.mNumFaces; ++f) {
        const auto overlaps = [&](unsigned int axis, float low, float high) {
            const auto at = [&](int k) { return mesh.mVertices[mesh.mFaces[f].mIndices[k]][axis]; };
            const auto [least, most] = std::minmax({at(0), at(1), at(2)});
            return least <= high && most >= low;
        };
        ASSERT_FALSE(overlaps(0, -8, 8) && overlaps(1, 10, 20) && overlaps(2, 115, 250)) << f;
    }
}
