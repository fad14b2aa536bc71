#include "engine/VT_Skybox.h"

#include "engine/Engine.h"
#include "engine/OpenGL.h"
#include "engine/ResourceManager.h"

#include <utility>

namespace {

// The image's cell borders, each cell inset by 0.0007 to keep its neighbours from bleeding in.
constexpr float u0 = 0.0007F;
constexpr float u1 = 0.2493F;
constexpr float u2 = 0.2507F;
constexpr float u3 = 0.4993F;
constexpr float u4 = 0.5007F;
constexpr float u5 = 0.7493F;
constexpr float u6 = 0.7507F;
constexpr float u7 = 0.9993F;
constexpr float v0 = 0.0007F;
constexpr float v1 = 0.3326333F;
constexpr float v2 = 0.3340333F;
constexpr float v3 = 0.6659667F;
constexpr float v4 = 0.6673667F;
constexpr float v5 = 0.9993F;

struct CubeVertex
{
    float x, y, z;  // in halves of the edge
    float u, v;
};

constexpr CubeVertex faces[6][4] = {
    // z = -1
    {{1, -1, -1, u2, v2}, {-1, -1, -1, u3, v2}, {-1, 1, -1, u3, v3}, {1, 1, -1, u2, v3}},
    // x = +1
    {{1, -1, 1, u0, v2}, {1, -1, -1, u1, v2}, {1, 1, -1, u1, v3}, {1, 1, 1, u0, v3}},
    // z = +1
    {{-1, -1, 1, u6, v2}, {1, -1, 1, u7, v2}, {1, 1, 1, u7, v3}, {-1, 1, 1, u6, v3}},
    // x = -1
    {{-1, -1, -1, u4, v2}, {-1, -1, 1, u5, v2}, {-1, 1, 1, u5, v3}, {-1, 1, -1, u4, v3}},
    // y = +1: shows its cell twisted, on purpose; the image is painted to match
    {{-1, 1, -1, u2, v4}, {-1, 1, 1, u3, v5}, {1, 1, 1, u2, v5}, {1, 1, -1, u3, v4}},
    // y = -1
    {{-1, -1, -1, u3, v1}, {-1, -1, 1, u3, v0}, {1, -1, 1, u2, v0}, {1, -1, -1, u2, v1}},
};

void drawFace(const CubeVertex (&face)[4], float half)
{
    glBegin(GL_QUADS);
    for (const CubeVertex& vertex : face) {
        glTexCoord2f(vertex.u, vertex.v);
        glVertex3f(vertex.x * half, vertex.y * half, vertex.z * half);
    }
    glEnd();
}

}  // namespace

VT_Skybox::VT_Skybox(std::string name) : textureName(std::move(name))
{
    ResourceManager::getInstance()->precacheTexture(textureName);
}

void VT_Skybox::draw(Vector3 position)
{
    const float half = VT.window.farPlane * 0.5F;
    glPushMatrix();
    glPushAttrib(GL_ENABLE_BIT);
    glEnable(GL_TEXTURE_2D);
    glDisable(GL_LIGHTING);
    glDisable(GL_BLEND);
    glColor4f(1.0F, 1.0F, 1.0F, 1.0F);
    glTranslatef(position.x, position.y, position.z);
    glBindTexture(GL_TEXTURE_2D, ResourceManager::getInstance()->getTexture(textureName));
    for (const auto& face : faces) {
        drawFace(face, half);
    }
    glPopAttrib();
    glPopMatrix();
}
