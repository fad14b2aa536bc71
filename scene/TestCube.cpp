#include "scene/TestCube.h"

#include "engine/OpenGL.h"
#include "engine/ResourceManager.h"
#include "scene/TeamColour.h"

#include <string>

namespace {

const std::string textureName = "carrier-texture-white.png";
const std::string modelName = "carrier.obj";

}  // namespace

TestCube::TestCube(long long newId, bool newFlag, bool blue)
    : CollisionObject(static_cast<unsigned long long>(newId))
{
    init(newFlag, blue);
}

TestCube::TestCube(int high, int low, bool newFlag, bool blue)
    : CollisionObject(static_cast<unsigned int>(high), static_cast<unsigned int>(low))
{
    init(newFlag, blue);
}

void TestCube::init(bool newFlag, bool blue)
{
    flag = newFlag;
    blueTeam = blue;
    type = SGT_CARRIER;
    ResourceManager::getInstance()->precacheTexture(textureName);
    ResourceManager::getInstance()->precacheModel(modelName);
}

void TestCube::realUpdate(float /*dt*/) {}

void TestCube::realDraw()
{
    ResourceManager* resources = ResourceManager::getInstance();
    glPushMatrix();
    setTeamColour(blueTeam);
    glTranslatef(0.0F, -13.0F, -130.0F);  // puts the start point above the model's flight deck
    glBindTexture(GL_TEXTURE_2D, resources->getTexture(textureName));
    resources->drawModel(modelName);
    glColor3f(1.0F, 1.0F, 1.0F);
    glPopMatrix();
}
