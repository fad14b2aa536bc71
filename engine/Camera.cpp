#include "engine/Camera.h"

#include "engine/OpenGL.h"

void Camera::roll(float angle)
{
    request(angle, direction);
}

void Camera::yaw(float angle)
{
    request(angle, up);
}

void Camera::pitch(float angle)
{
    Vector3 right = direction.crossProduct(up);
    right.normalise();
    request(angle, right);
}

void Camera::request(float angle, Vector3 axis)
{
    Quaternion q = Quaternion::FromAxisAngle(angle, axis);
    q.normalise();
    rotation = rotation * q;
    rotation.normalise();
}

Vector3 Camera::setCamera()
{
    direction = rotation.rotate(direction);
    up = rotation.rotate(up);
    orientation = rotation * orientation;
    rotation = Quaternion();

    const Vector3 centre = position + direction;
    gluLookAt(static_cast<double>(position.x), static_cast<double>(position.y),
              static_cast<double>(position.z), static_cast<double>(centre.x), static_cast<double>(centre.y),
              static_cast<double>(centre.z), static_cast<double>(up.x), static_cast<double>(up.y),
              static_cast<double>(up.z));
    return position;
}

void Camera::move(float /*forward*/, float /*sideways*/) {}
