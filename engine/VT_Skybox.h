#pragma once

#include "math/Vector3.h"

#include <string>

/// The sky: a cube around the viewer, as large as the far plane allows, from one image of 4 by 3 cells.
///
/// The middle row holds the four sides, the cells above and below its second one the bottom and the top. Main
/// thread only; an image that does not load leaves the cube white.
class VT_Skybox
{
public:
    /// Loads the image at once.
    explicit VT_Skybox(std::string name);
    /// Draws the cube centred on `position`, unlit and untinted.
    void draw(Vector3 position);

    std::string textureName;
};
