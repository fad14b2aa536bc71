#include "scene/Player.h"

#include "engine/OpenGL.h"
#include "engine/ResourceManager.h"
#include "math/SaturatingTruncation.h"
#include "scene/TeamColour.h"

namespace {

const std::string textureName = "texture-white.png";
const std::string modelName = "fighter.obj";
constexpr float modelScale = 0.05F;
constexpr float orientationRate = 15.0F;  ///< of the way to the target orientation, per second
constexpr float secondsPerMillisecond = 0.001F;

}  // namespace

Player::Player(unsigned long long newId, bool blue, int hitPoints)
    : CollisionObject(newId), blueTeam(blue), health(static_cast<float>(hitPoints))
{
    init();
}

Player::Player(unsigned int high, unsigned int low, bool blue, int hitPoints)
    : CollisionObject(high, low), blueTeam(blue), health(static_cast<float>(hitPoints))
{
    init();
}

void Player::init()
{
    angularStep = Quaternion();
    ResourceManager::getInstance()->precacheTexture(textureName);
    type = SGT_PLAYER;
    score = 0;
}

void Player::realDraw()
{
    ResourceManager* resources = ResourceManager::getInstance();
    glPushMatrix();
    setTeamColour(blueTeam);
    glBindTexture(GL_TEXTURE_2D, resources->getTexture(textureName));
    glScalef(modelScale, modelScale, modelScale);
    resources->drawModel(modelName);
    glColor3f(1.0F, 1.0F, 1.0F);
    glPopMatrix();
}

void Player::updateInfo(unsigned int time, Vector3& newPosition, Quaternion& newOrientation, bool reset)
{
    Transform::updateInfo(time, newPosition, newOrientation, reset);
    angularStep = smoothOrientation.negation() * serverOrientation[0];
    angularStep.normalise();
}

void Player::realUpdate(float dt)
{
    smoothTheOrientation(dt);
    position = smoothPosition;
    orientation = smoothOrientation;
    Transform::realUpdate(dt);
}

void Player::smoothTheOrientation(float dt)
{
    const float interval = static_cast<float>(serverTime[0] - serverTime[1]) * secondsPerMillisecond;
    // Two states of the same time give no interval: aim at the newest state itself. Every frame shorter than
    // the server's interval does the same.
    const int steps = interval == 0.0F ? 0 : saturatingTruncation(static_cast<double>(dt / interval));
    const Quaternion target = angularStep.exponentiation(steps) * serverOrientation[0];
    smoothOrientation = Quaternion::Slerp(smoothOrientation, target, dt * orientationRate);
}
