// The motion half of Transform: how it records a server state, and how a frame advances it between states.
#include "scene/Transform.h"

#include <algorithm>
#include <iterator>

void Transform::updateInfo(unsigned int time, Vector3& newPosition, Quaternion& newOrientation, bool reset)
{
    updateLast(time, newPosition, newOrientation, reset);
}

void Transform::updateLast(unsigned int time, Vector3& newPosition, Quaternion& newOrientation, bool reset)
{
    if (reset) {
        // velocity[0] keeps its value: the object goes on from here at its old velocity.
        rememberAll(time, newPosition, newOrientation);
        smoothPosition = newPosition;
        velocity[1] = velocity[0];
        currentVelocity = velocity[0];
    } else {
        shiftHistory(time, newPosition, newOrientation);
        velocity[1] = velocity[0];
        velocity[0] = measuredVelocity();
    }
    acceleration = velocity[0] - velocity[1];
    correction = serverPosition[0] - smoothPosition;
    if (correction.length() > snapDistance) {
        snap(time, newPosition, newOrientation);
    }
    blendStart = smoothPosition;
    currentVelocity = velocity[0];
    timeSinceUpdate = 0.0F;
}

void Transform::rememberAll(unsigned int time, const Vector3& newPosition, const Quaternion& newOrientation)
{
    std::fill(std::begin(serverTime), std::end(serverTime), time);
    std::fill(std::begin(serverPosition), std::end(serverPosition), newPosition);
    std::fill(std::begin(serverOrientation), std::end(serverOrientation), newOrientation);
}

void Transform::shiftHistory(unsigned int time, const Vector3& newPosition, const Quaternion& newOrientation)
{
    for (int i = 2; i > 0; --i) {
        serverTime[i] = serverTime[i - 1];
        serverPosition[i] = serverPosition[i - 1];
        serverOrientation[i] = serverOrientation[i - 1];
    }
    serverTime[0] = time;
    serverPosition[0] = newPosition;
    serverOrientation[0] = newOrientation;
}

Vector3 Transform::measuredVelocity() const
{
    if (serverTime[0] == serverTime[1]) {
        return {};
    }
    // Unsigned on purpose: a state from the past gives an interval of weeks, and so a velocity of nearly
    // zero.
    const auto milliseconds = static_cast<float>(serverTime[0] - serverTime[1]);
    return (serverPosition[0] - serverPosition[1]) * (1000.0F / milliseconds);
}

// acceleration keeps its value on purpose: the object drifts by it until the next state.
void Transform::snap(unsigned int time, const Vector3& newPosition, const Quaternion& newOrientation)
{
    rememberAll(time, newPosition, newOrientation);
    smoothPosition = newPosition;
    velocity[0] = velocity[1] = currentVelocity = correction = {};
}

void Transform::realUpdate(float dt)
{
    timeSinceUpdate += dt;
    currentVelocity += acceleration * dt;
    if (timeSinceUpdate <= blendPeriod) {
        const Vector3 target = blendStart + correction + currentVelocity * blendPeriod;
        smoothPosition = Vector3::lerp(blendStart, target, timeSinceUpdate / blendPeriod);
    } else {
        smoothPosition += currentVelocity * dt;
    }
}
