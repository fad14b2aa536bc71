#include "scene/Projectile.h"

#include "engine/OpenGL.h"
#include "engine/ResourceManager.h"
#include "scene/SceneGraph.h"
#include "scene/TeamColour.h"

#include <string>

namespace {

const std::string modelName = "shot.obj";
constexpr float modelScale = 0.01F;
constexpr float fullLifetime = 20.0F;  ///< seconds; ends a shot whose destruction the server never sent

}  // namespace

Projectile::Projectile(unsigned long long newId) : CollisionObject(newId)
{
    init();
}

Projectile::Projectile(unsigned int high, unsigned int low) : CollisionObject(high, low)
{
    init();
}

void Projectile::init()
{
    lifetime = fullLifetime;
    type = SGT_PROJECTILE;
}

void Projectile::realUpdate(float dt)
{
    Transform::realUpdate(dt);
    lifetime -= dt;
    if (lifetime < 0.0F) {
        SceneGraph::getInstance()->addToRemoveList(this);
    }
    position = smoothPosition;
}

void Projectile::realDraw()
{
    glPushMatrix();
    glDisable(GL_TEXTURE_2D);
    setTeamColour(blueTeam);  // stays set: every other object sets its own colour
    glScalef(modelScale, modelScale, modelScale);
    ResourceManager::getInstance()->drawModel(modelName);
    glEnable(GL_TEXTURE_2D);
    glPopMatrix();
}
