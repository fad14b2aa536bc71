#pragma once

#include <string>

/// Decodes the image file and uploads it as an OpenGL texture with mipmaps and linear filters. Returns the
/// texture's name. An unreadable file prints a line and yields 0. An image with other than 3 or 4 bytes per
/// pixel (a palette, greys) ends the process with status -1.
///
/// Leaves GL_TEXTURE_2D and GL_BLEND enabled, blending by source alpha: text and billboards rely on it.
unsigned int loadTextureFile(const std::string& path);
