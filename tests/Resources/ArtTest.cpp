// What the client's drawing takes for granted of the art, and what the art may cost.
#include <SDL_image.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <gtest/gtest.h>
#include <assimp/Importer.hpp>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

const std::string folder = VANTOR_RESOURCES;

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

    /// What is drawn at texture coordinates that are not at the picture's border: four pixels, blended.
    double blended(double u, double v, int channel) const
    {
        const auto [x, y] = std::pair(u * width() - 0.5, v * height() - 0.5);
        const int left = static_cast<int>(x);
        const int top = static_cast<int>(y);
        const auto row = [&](int line) {
            return at(left, line, channel) * (left + 1 - x) + at(left + 1, line, channel) * (x - left);
        };
        return row(top) * (top + 1 - y) + row(top + 1) * (y - top);
    }

    /// Mean and deviation of the first channel in these rows.
    std::pair<double, double> tones(int firstRow, int endRow) const
    {
        double mean = 0, squares = 0;
        const double share = 1.0 / (width() * (endRow - firstRow));
        for (int i = firstRow * width(); i < endRow * width(); ++i) {
            mean += at(i % width(), i / width(), 0) * share;
            squares += std::pow(at(i % width(), i / width(), 0), 2) * share;
        }
        return {mean, std::sqrt(squares - mean * mean)};
    }

private:
    std::unique_ptr<SDL_Surface, void (*)(SDL_Surface*)> surface;
};

struct Model
{
    explicit Model(const std::string& name)
    {
        const aiScene* scene =
            importer.ReadFile(folder + name, aiProcess_Triangulate | aiProcess_GenBoundingBoxes);
        if (scene == nullptr || scene->mNumMeshes != 1) {
            throw std::runtime_error(name + ": " + importer.GetErrorString());
        }
        mesh = scene->mMeshes[0];
    }

    Assimp::Importer importer;
    const aiMesh* mesh = nullptr;
};

struct Line
{
    double u0, v0, u1, v1;  ///< texture coordinates of its ends
};

// How far two lines of a picture differ that are seen as one: the mean of all channels, of 255.
double seam(const Image& image, const Line& a, const Line& b)
{
    const int samples = 1000;
    double sum = 0;
    for (int i = 0; i < 3 * samples; ++i) {
        const double t = (i / 3 + 0.5) / samples;
        const auto on = [&](const Line& line) {
            return image.blended(line.u0 + (line.u1 - line.u0) * t, line.v0 + (line.v1 - line.v0) * t, i % 3);
        };
        sum += std::abs(on(a) - on(b));
    }
    return sum / (3 * samples);
}

}  // namespace

// Other sizes would be rescaled at every start, other depths end the client.
TEST(Art, PicturesAreOfSizesAndDepthsThatTheClientUploadsAsTheyAre)
{
    for (const auto& [name, depth] : {std::pair("skybox.png", 3), std::pair("texture-white.png", 3),
                                      std::pair("carrier-texture-white.png", 3), std::pair("BOOOM.png", 4)}) {
        const Image image(name);
        for (const int side : {image.width(), image.height()}) {
            EXPECT_TRUE(side >= 256 && (side & (side - 1)) == 0) << name << ' ' << side;
        }
        EXPECT_EQ(image.depth(), depth) << name;
    }
}

// The texture coordinates are those with which the cube is drawn; its top shows its cell's diagonals left and
// right.
TEST(Art, TheSkyIsLitAndItsFacesMeetWithoutASeam)
{
    const Image sky("skybox.png");
    EXPECT_GE(std::min(sky.width() / 4, sky.height() / 3), 512);
    EXPECT_GT(sky.tones(sky.height() / 3, sky.height() * 2 / 3).first, 15)
        << "dark blue ships would not be seen";
    const double u[] = {0.0007, 0.2493, 0.2507, 0.4993, 0.5007, 0.7493, 0.7507, 0.9993};
    const double v[] = {0.0007, 0.3326333, 0.3340333, 0.6659667, 0.6673667, 0.9993};
    const struct
    {
        const char* face;
        double u0, u1, next;  ///< its ends, and where the side face after it begins
        Line top, bottom;     ///< what the other two faces show at its head and foot
    } sides[] = {
        {"+x", u[0], u[1], u[2], {u[2], v[5], u[3], v[4]}, {u[2], v[0], u[2], v[1]}},
        {"-z", u[2], u[3], u[4], {u[3], v[4], u[2], v[4]}, {u[2], v[1], u[3], v[1]}},
        {"-x", u[4], u[5], u[6], {u[2], v[4], u[3], v[5]}, {u[3], v[1], u[3], v[0]}},
        {"+z", u[6], u[7], u[0], {u[3], v[5], u[2], v[5]}, {u[3], v[0], u[2], v[0]}},
    };
    for (const auto& side : sides) {
        EXPECT_LT(seam(sky, {side.u1, v[2], side.u1, v[3]}, {side.next, v[2], side.next, v[3]}), 1)
            << side.face;
        EXPECT_LT(seam(sky, {side.u0, v[3], side.u1, v[3]}, side.top), 1) << side.face;
        EXPECT_LT(seam(sky, {side.u0, v[2], side.u1, v[2]}, side.bottom), 1) << side.face;
    }
}

// The last pixel of a row is blended with the first: anything at the border would draw lines around
// explosions. Only sparks are sharp: a disc cut out hard would have twice as many steps.
TEST(Art, ExplosionsAreSolidWithinSoftAndVanishAtTheirBorder)
{
    const Image explosion("BOOOM.png");
    const int last = explosion.width() - 1;
    EXPECT_EQ(explosion.at(last / 2, last / 2, 3), 255);
    int hardSteps = 0;
    for (int y = 0; y <= last; ++y) {
        EXPECT_EQ(explosion.at(y, 0, 3) + explosion.at(y, last, 3), 0) << y;
        EXPECT_EQ(explosion.at(0, y, 3) + explosion.at(last, y, 3), 0) << y;
        for (int x = 1; x <= last; ++x) {
            hardSteps += std::abs(explosion.at(x, y, 3) - explosion.at(x - 1, y, 3)) > 64 ? 1 : 0;
        }
    }
    EXPECT_LT(hardSteps, last * last / 300);
}

// Team colours are multiplied in: a tint would spoil one team's, dark plating (the upper half) both.
TEST(Art, HullTexturesAreLightGraysWithPlates)
{
    for (const char* name : {"texture-white.png", "carrier-texture-white.png"}) {
        const Image image(name);
        for (int i = 0; i < image.width() * image.height(); ++i) {
            const auto channel = [&](int k) { return image.at(i % image.width(), i / image.width(), k); };
            ASSERT_TRUE(channel(0) == channel(1) && channel(1) == channel(2)) << name << ' ' << i;
        }
        const auto [mean, deviation] = image.tones(0, image.height() / 2);
        EXPECT_TRUE(mean > 180 && deviation > 10) << name << ' ' << mean << ' ' << deviation;
    }
}

// Models turn around their origin, fighters fly with the nose ahead, and shots are never turned.
TEST(Art, ModelsKeepTheirBudgetTheirSizeAndTheirPlace)
{
    const struct
    {
        const char* name;
        unsigned int triangles;
        float scale;  ///< as the client draws it; so are the lengths that follow
        float length;
        aiVector3D middle;
    } models[] = {{"fighter.obj", 1500, 0.05F, 3.9F, {0, 0.4F, 0.6F}},
                  {"shot.obj", 200, 0.01F, 1, {0, 0, 0}},
                  {"carrier.obj", 12000, 1, 350, {0, 21, 101}}};
    for (const auto& wanted : models) {
        const Model model(wanted.name);
        const auto& [low, high] = std::pair(model.mesh->mAABB.mMin, model.mesh->mAABB.mMax);
        EXPECT_LE(model.mesh->mNumFaces, wanted.triangles) << wanted.name;
        EXPECT_TRUE(model.mesh->HasNormals() && model.mesh->HasTextureCoords(0)) << wanted.name;
        EXPECT_NEAR((high.z - low.z) * wanted.scale, wanted.length, wanted.length * 0.1F) << wanted.name;
        const aiVector3D aside = (low + high) * (0.5F * wanted.scale) - wanted.middle;
        EXPECT_LT(aside.Length(), wanted.length * 0.04F) << wanted.name;
    }
    const Model fighter("fighter.obj");
    aiVector3D nose;
    for (unsigned int i = 0; i < fighter.mesh->mNumVertices; ++i) {
        nose = std::max(nose, fighter.mesh->mVertices[i], [](auto a, auto b) { return a.z < b.z; });
    }
    EXPECT_LT(std::abs(nose.x), 0.05F * fighter.mesh->mAABB.mMax.x);
}

// Scaling lengthens normals by its inverse, and nothing normalises them again: the light would be all or
// none. They lean to the light above, or sides turned away from the one at the left would have half the team
// colour.
TEST(Art, HullNormalsAreAsLongAsTheScaleTheyAreDrawnWithAndLeanToTheLight)
{
    for (const auto& [name, scale] : {std::pair("fighter.obj", 0.05F), std::pair("carrier.obj", 1.0F)}) {
        const Model model(name);
        float scaled = 0, light = 0;
        for (unsigned int i = 0; i < model.mesh->mNumVertices; ++i) {
            const aiVector3D normal = model.mesh->mNormals[i] / scale;
            scaled += std::abs(normal.Length() - 1) < 0.5F ? 1.0F : 0.0F;
            light += std::clamp(0.5F + 0.5F * normal.y, 0.5F, 1.0F);
        }
        EXPECT_GT(scaled / static_cast<float>(model.mesh->mNumVertices), 0.5F) << name;
        EXPECT_GT(light / static_cast<float>(model.mesh->mNumVertices), 0.75F) << name;
    }
}

// Ships start at the carrier's (0, 13, 130): nothing may stand there.
TEST(Art, TheCarrierLeavesRoomWhereShipsStart)
{
    const Model carrier("carrier.obj");
    const aiVector3D low(-8, 10, 115), high(8, 20, 250);
    for (unsigned int f = 0; f < carrier.mesh->mNumFaces; ++f) {
        const unsigned int* corners = carrier.mesh->mFaces[f].mIndices;
        bool apart = false;
        for (unsigned int axis = 0; axis < 3; ++axis) {
            const auto at = [&](int k) { return carrier.mesh->mVertices[corners[k]][axis]; };
            const auto [least, most] = std::minmax({at(0), at(1), at(2)});
            apart = apart || most < low[axis] || least > high[axis];
        }
        ASSERT_TRUE(apart) << f;
    }
}
