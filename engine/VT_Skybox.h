#pragma once

#include "math/Vector3.h"

#include <string>

/// The sky: a cube around the viewer, textured from one image of 4 by 3 cells.
///
/// Its edge is as long as the far plane is distant. Each face is at half that distance, so even the corners
/// are nearer than the plane. The image's middle row holds the four sides. The cell above its second cell
/// holds the bottom, the cell below holds the top. Main thread only. If the image cannot be loaded, the cube
/// is white.
class VT_Skybox
{
public:
    /// Loads the image at once.
    explicit VT_Skybox(std::string name);
    /// Draws the cube centred on `position`, unlit and untinted.
    void draw(Vector3 position);

    std::string textureName;
};
