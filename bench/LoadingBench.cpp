// Loading models and textures, against the importer and the decoder with the same OpenGL work.
#include "engine/ModelLoader.h"
#include "engine/SurfacePtr.h"
#include "engine/TextureLoader.h"

#include <SDL_image.h>
#include <SDL_opengl.h>
#include <assimp/scene.h>
#include <benchmark/benchmark.h>
#include <assimp/Importer.hpp>

#include <string>
#include <utility>

namespace {

void emitTriangle(const aiMesh& mesh, const aiFace& face)
{
    glBegin(GL_TRIANGLES);
    for (unsigned int k = 0; k < face.mNumIndices; ++k) {
        const unsigned int i = face.mIndices[k];
        if (mesh.HasNormals()) {
            glNormal3f(mesh.mNormals[i].x, mesh.mNormals[i].y, mesh.mNormals[i].z);
        }
        if (mesh.HasTextureCoords(0)) {
            const aiVector3D& at = mesh.mTextureCoords[0][i];
            glTexCoord2d(static_cast<double>(at.x), 1.0 - static_cast<double>(at.y));
        }
        glVertex3f(mesh.mVertices[i].x, mesh.mVertices[i].y, mesh.mVertices[i].z);
    }
    glEnd();
}

unsigned int compile(const aiScene& scene)
{
    const unsigned int list = glGenLists(1);
    glNewList(list, GL_COMPILE);
    for (unsigned int m = 0; m < scene.mNumMeshes; ++m) {
        for (unsigned int f = 0; f < scene.mMeshes[m]->mNumFaces; ++f) {
            emitTriangle(*scene.mMeshes[m], scene.mMeshes[m]->mFaces[f]);
        }
    }
    glEndList();
    return list;
}

unsigned int upload(const SDL_Surface& surface)
{
    unsigned int texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    const GLenum format = surface.format->BytesPerPixel == 3 ? GL_RGB : GL_RGBA;
    gluBuild2DMipmaps(GL_TEXTURE_2D, surface.format->BytesPerPixel, surface.w, surface.h, format,
                      GL_UNSIGNED_BYTE, surface.pixels);
    return texture;
}

SurfacePtr decode(const std::string& path)
{
    return SurfacePtr(IMG_Load(path.c_str()));
}

// load() returns the name of a new list or texture, or 0; drop(name) deletes it.
template <class Load, class Drop>
void measure(benchmark::State& state, Load load, Drop drop)
{
    while (state.KeepRunning()) {
        const unsigned int name = load();
        if (name == 0) {
            state.SkipWithError("nothing to load");
            break;
        }
        drop(name);
        glFinish();
    }
}

void dropList(unsigned int list)
{
    glDeleteLists(list, 1);
}
void dropTexture(unsigned int texture)
{
    glDeleteTextures(1, &texture);
}

unsigned int importAndCompile(const std::string& path)
{
    Assimp::Importer importer;
    const aiScene* scene = importer.ReadFile(path, modelImportFlags);
    return scene == nullptr ? 0 : compile(*scene);
}

unsigned int decodeAndUpload(const std::string& path)
{
    const SurfacePtr surface = decode(path);
    return surface ? upload(*surface) : 0;
}

void modelOurs(benchmark::State& state, const std::string& path)
{
    measure(
        state, [&] { return loadModelFile(path); }, dropList);
}
void modelLibrary(benchmark::State& state, const std::string& path)
{
    measure(
        state, [&] { return importAndCompile(path); }, dropList);
}
void modelGL(benchmark::State& state, const std::string& path)
{
    Assimp::Importer importer;
    const aiScene* scene = importer.ReadFile(path, modelImportFlags);
    measure(
        state, [scene] { return scene == nullptr ? 0 : compile(*scene); }, dropList);
}

void textureOurs(benchmark::State& state, const std::string& path)
{
    measure(
        state, [&] { return loadTextureFile(path); }, dropTexture);
}
void textureLibrary(benchmark::State& state, const std::string& path)
{
    measure(
        state, [&] { return decodeAndUpload(path); }, dropTexture);
}
void textureGL(benchmark::State& state, const std::string& path)
{
    const SurfacePtr surface = decode(path);
    measure(
        state, [&surface] { return surface ? upload(*surface) : 0; }, dropTexture);
}

using Loading = void(benchmark::State&, const std::string& path);

void add(const std::string& file, Loading ours, Loading library, Loading gl)
{
    const std::pair<const char*, Loading*> ways[] = {{"ours", ours}, {"library", library}, {"gl", gl}};
    for (const auto& [way, load] : ways) {
        benchmark::RegisterBenchmark(("loading/" + file + "/" + way).c_str(), [path = VANTOR_RESOURCES + file,
                                                                               load = load](
                                                                                  benchmark::State& state) {
            load(state, path);
        })->UseRealTime();
    }
}

// Of each kind the one that is loaded in every fight, and the one that makes a start long.
const bool areAdded = [] {
    add("fighter.obj", modelOurs, modelLibrary, modelGL);
    add("carrier.obj", modelOurs, modelLibrary, modelGL);
    add("texture-white.png", textureOurs, textureLibrary, textureGL);
    add("skybox.png", textureOurs, textureLibrary, textureGL);
    return true;
}();

}  // namespace
