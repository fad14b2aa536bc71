#pragma once

#include <SDL_ttf.h>

#include <map>
#include <string>

/// The cache of everything loaded for drawing: textures, models and fonts, by file name.
///
/// A singleton, created on first use and never destroyed. Only the thread that owns the OpenGL context uses
/// it. Names are relative to the resource folder. A get... loads on the first request and looks up later,
/// which costs one search in a small map. A failed load prints a line once, is cached as 0 or null, and is
/// never retried. A load... always loads. A precache... is a get... ahead of time, so that no frame waits for
/// the disk.
class ResourceManager
{
public:
    static ResourceManager* instance;
    static ResourceManager* getInstance();

    /// Starts SDL_ttf and finds the resource folder.
    ResourceManager();

    void setupResourceFolder();

    /// OpenGL texture names. An image with other than 3 or 4 bytes per pixel ends the process with status -1.
    unsigned int getTexture(const std::string& name);
    unsigned int loadTexture(const std::string& name);
    void precacheTexture(const std::string& name);

    /// OpenGL display lists.
    unsigned int getModel(const std::string& name);
    unsigned int loadModel(const std::string& name);
    void drawModel(const std::string& name);
    void precacheModel(const std::string& name);

    /// Fonts of 20 points.
    TTF_Font* getFont(const std::string& name);
    TTF_Font* loadFont(const std::string& name);
    void precacheFont(const std::string& name);

    /// Draws white text, which the current colour tints. Its top left corner is at (x, y, 0), one pixel is
    /// one unit. The text comes first, then the font's file name.
    void drawText(const std::string& text, const std::string& font, float x, float y);
    /// The same in any colour (0 to 255 each) and at any depth. Each call renders, uploads and deletes a
    /// texture. A text that cannot be rendered (empty, or 16,384 pixels wide) is not drawn.
    void RenderText(const TTF_Font* font, const std::string& text, const double& x, const double& y,
                    const double& z, const unsigned char& r, const unsigned char& g, const unsigned char& b);

    std::string resourceFolder;  ///< ends with "/Contents/Resources/"
    std::map<std::string, unsigned int> textures;
    std::map<std::string, unsigned int> models;
    std::map<std::string, TTF_Font*> fonts;
};
