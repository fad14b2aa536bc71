// The drawing half of Transform, apart from the rest: a program that never draws links no OpenGL.
#include "scene/Transform.h"

#include "engine/OpenGL.h"
#include "math/Matrix4.h"

void Transform::draw()
{
    glPushMatrix();
    applyTransformation();
    realDraw();
    for (Transform* child : children) {
        child->draw();
    }
    glPopMatrix();
}

void Transform::applyTransformation()
{
    glScalef(scaleFactors.x, scaleFactors.y, scaleFactors.z);
    glTranslatef(position.x, position.y, position.z);
    const Matrix4 rotation(getRotationMatrix());
    glMultMatrixf(rotation.m);
}
