// Loading models and textures, against the library that reads them. The difference is OpenGL's work.
#include "engine/ModelLoader.h"
#include "engine/OpenGL.h"
#include "engine/SurfacePtr.h"
#include "engine/TextureLoader.h"

#include <SDL_image.h>
#include <benchmark/benchmark.h>
#include <assimp/Importer.hpp>

#include <functional>
#include <string>

namespace {

bool loadModel(const std::string& path)
{
    const unsigned int list = loadModelFile(path);
    glDeleteLists(list, 1);
    glFinish();
    return list != 0;
}

bool importModel(const std::string& path)
{
    Assimp::Importer importer;
    return importer.ReadFile(path, modelImportFlags) != nullptr;
}

bool loadTexture(const std::string& path)
{
    const unsigned int texture = loadTextureFile(path);
    glDeleteTextures(1, &texture);
    glFinish();
    return texture != 0;
}

bool decodeImage(const std::string& path)
{
    return SurfacePtr(IMG_Load(path.c_str())) != nullptr;
}

void add(const std::string& file, const char* how, const std::function<bool(const std::string&)>& load)
{
    const auto measure = [path = VANTOR_RESOURCES + file, load](benchmark::State& state) {
        while (state.KeepRunning()) {
            if (!load(path)) {
                state.SkipWithError("nothing to load");
                return;
            }
        }
    };
    benchmark::RegisterBenchmark(("loading/" + file + "/" + how).c_str(), measure)->UseRealTime();
}

// Of each kind the one that every fight loads, and the one that takes longest.
const bool areAdded = [] {
    for (const char* model : {"fighter.obj", "carrier.obj"}) {
        add(model, "ours", loadModel);
        add(model, "library", importModel);
    }
    for (const char* texture : {"texture-white.png", "skybox.png"}) {
        add(texture, "ours", loadTexture);
        add(texture, "library", decodeImage);
    }
    return true;
}();

}  // namespace
