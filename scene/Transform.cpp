#include "scene/Transform.h"

#include "scene/SceneGraph.h"

#include <cstdint>

Transform::Transform(unsigned long long newId) : id(newId)
{
    init();
}

Transform::Transform(unsigned int high, unsigned int low)
    : Transform((static_cast<unsigned long long>(high) << 32U) | low)
{
}

void Transform::init()
{
    parent = nullptr;
    children.clear();
    scaleFactors = {1.0F, 1.0F, 1.0F};
    type = SGT_NONE;
    timeSinceUpdate = 0.0F;
}

long long Transform::getUDPid()
{
    return static_cast<long long>(reinterpret_cast<std::intptr_t>(this));
}

void* Transform::getTCPid()
{
    return this;
}

void Transform::attach(Transform* child)
{
    child->parent = this;
    children.push_back(child);
    SceneGraph::getInstance()->addTransformToType(child, child->type);
}

void Transform::update(float dt)
{
    realUpdate(dt);
    for (Transform* child : children) {
        child->update(dt);
    }
}

void Transform::scale(Vector3 v)
{
    scaleFactors = {scaleFactors.x * v.x, scaleFactors.y * v.y, scaleFactors.z * v.z};
}

void Transform::destroyChildren()
{
    for (Transform* child : children) {
        child->destroyChildren();
        delete child;
    }
}
