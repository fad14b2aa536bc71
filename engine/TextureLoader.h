#pragma once

#include <string>

/// Decodes the image file and uploads it as an OpenGL texture with mipmaps, drawn with linear filters;
/// returns the texture's name. A file that cannot be read is reported and yields 0. An image of other than 3
/// or 4 bytes per pixel (a palette, greys) ends the process with status -1.
///
/// Leaves GL_TEXTURE_2D and GL_BLEND enabled, blending by source alpha: text and billboards rely on it.
unsigned int loadTextureFile(const std::string& path);
