#include "engine/ResourceManager.h"

#include "Common/DebugPrint.h"
#include "engine/ModelLoader.h"
#include "engine/OpenGL.h"
#include "engine/ResourceFolder.h"
#include "engine/TextRenderer.h"
#include "engine/TextureLoader.h"

#include <SDL.h>

ResourceManager* ResourceManager::instance = nullptr;

namespace {

constexpr int fontSize = 20;  // points

// Returns the handle cached under `name`, or the result of load(). A failed load prints `kind` and is cached
// too.
template <class Handle, class Load>
Handle lookUp(std::map<std::string, Handle>& cache, const std::string& name, const char* kind, Load load)
{
    const auto entry = cache.find(name);
    if (entry != cache.end()) {
        return entry->second;
    }
    const Handle handle = load();
    if (!handle) {
        DebugPrint("Error %s not loaded %s\n", kind, name.c_str());
    }
    return cache[name] = handle;
}

}  // namespace

ResourceManager* ResourceManager::getInstance()
{
    if (instance == nullptr) {
        instance = new ResourceManager;
    }
    return instance;
}

ResourceManager::ResourceManager()
{
    if (TTF_Init() == -1) {
        DebugPrint("TTF_Init: %s\n", SDL_GetError());
    }
    setupResourceFolder();
}

void ResourceManager::setupResourceFolder()
{
    resourceFolder = applicationFolder() + "/Contents/Resources/";
}

unsigned int ResourceManager::getTexture(const std::string& name)
{
    return lookUp(textures, name, "Texture", [&] { return loadTexture(name); });
}

unsigned int ResourceManager::loadTexture(const std::string& name)
{
    return loadTextureFile(resourceFolder + name);
}

void ResourceManager::precacheTexture(const std::string& name)
{
    getTexture(name);
}

unsigned int ResourceManager::getModel(const std::string& name)
{
    return lookUp(models, name, "Model", [&] { return loadModel(name); });
}

unsigned int ResourceManager::loadModel(const std::string& name)
{
    DebugPrint("Loading model: %s\n", name.c_str());
    return loadModelFile(resourceFolder + name);
}

void ResourceManager::drawModel(const std::string& name)
{
    const unsigned int list = getModel(name);
    if (list != 0) {
        glCallList(list);
    }
}

void ResourceManager::precacheModel(const std::string& name)
{
    getModel(name);
}

TTF_Font* ResourceManager::getFont(const std::string& name)
{
    return lookUp(fonts, name, "Font", [&] { return loadFont(name); });
}

TTF_Font* ResourceManager::loadFont(const std::string& name)
{
    const std::string path = resourceFolder + name;
    TTF_Font* font = TTF_OpenFont(path.c_str(), fontSize);
    if (font == nullptr) {
        DebugPrint("Error:%s, could not open %s\n", SDL_GetError(), path.c_str());
    }
    return font;
}

void ResourceManager::precacheFont(const std::string& name)
{
    getFont(name);
}

void ResourceManager::drawText(const std::string& text, const std::string& font, float x, float y)
{
    constexpr unsigned char white = 255;
    const TTF_Font* handle = getFont(font);
    if (handle != nullptr) {
        RenderText(handle, text, static_cast<double>(x), static_cast<double>(y), 0.0, white, white, white);
    }
}

void ResourceManager::RenderText(const TTF_Font* font, const std::string& text, const double& x,
                                 const double& y, const double& z, const unsigned char& r,
                                 const unsigned char& g, const unsigned char& b)
{
    drawTextQuad(font, text, {x, y, z}, {r, g, b, 0});
}
