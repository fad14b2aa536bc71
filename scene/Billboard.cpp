#include "scene/Billboard.h"

#include "GUIClient/VTEntryPoint.h"
#include "engine/OpenGL.h"
#include "engine/ResourceManager.h"
#include "scene/SceneGraph.h"

#include <string>

namespace {

const std::string textureName = "BOOOM.png";
constexpr float edge = 10.0F;  ///< world units

void quadVertex(float u, float v)
{
    glTexCoord2f(u, v);
    glVertex3f(u * edge, v * edge, 0.0F);
}

}  // namespace

Billboard::Billboard(long long newId) : Billboard(newId, Vector3()) {}

Billboard::Billboard(long long newId, Vector3 at) : Transform(static_cast<unsigned long long>(newId))
{
    position = at;
    orientation = VTEntryPoint::getInstance()->getCamera().getOrientation();
    init();
}

Billboard::Billboard(long long newId, Vector3 at, Quaternion q)
    : Transform(static_cast<unsigned long long>(newId))
{
    position = at;
    // 180 radians, not degrees: about 233 degrees. Kept on purpose, so that the explosion looks the same.
    orientation = q * Quaternion::FromAxisAngle(180.0F, {0.0F, 1.0F, 0.0F});
    orientation.normalise();
    init();
}

void Billboard::init()
{
    type = SGT_BILLBOARD;
}

void Billboard::realUpdate(float dt)
{
    lifetime -= dt;
    if (lifetime < 0.0F) {
        SceneGraph::getInstance()->addToRemoveList(this);
    }
    Transform::realUpdate(dt);
}

void Billboard::realDraw()
{
    glPushMatrix();
    const unsigned int texture = ResourceManager::getInstance()->getTexture(textureName);
    glTranslatef(edge / 2.0F, edge / 2.0F, 0.0F);
    glRotatef(180.0F, 0.0F, 0.0F, 1.0F);
    glColor3f(1.0F, 1.0F, 1.0F);
    glBindTexture(GL_TEXTURE_2D, texture);
    glBegin(GL_QUADS);
    quadVertex(0.0F, 1.0F);
    quadVertex(1.0F, 1.0F);
    quadVertex(1.0F, 0.0F);
    quadVertex(0.0F, 0.0F);
    glEnd();
    glPopMatrix();
}
