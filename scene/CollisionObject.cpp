#include "scene/CollisionObject.h"

CollisionObject::CollisionObject(unsigned long long newId) : Transform(newId) {}

CollisionObject::CollisionObject(unsigned int high, unsigned int low) : Transform(high, low) {}

CollisionObject::~CollisionObject()
{
    delete sphere;
    delete lineSegment;
}

void CollisionObject::init()
{
    delete sphere;
    delete lineSegment;
    sphere = nullptr;
    lineSegment = nullptr;
    collisionType = NO_VOLUME;
}

void CollisionObject::setSphere(float radius)
{
    if (collisionType == NO_VOLUME) {
        collisionType = SPHERE;
        sphere = new Sphere(&position, radius);
    }
}

void CollisionObject::setLineSegment(Vector3 offset)
{
    if (collisionType == NO_VOLUME) {
        collisionType = LINE_SEGMENT;
        lineOffset = offset;
        lineSegment = new LineSegment(&position, &lineOffset);
    }
}

// Takes this object's own rotation and offset even if `owner` is another object, see collidesWith.
void CollisionObject::aimSegmentOf(CollisionObject& owner) const
{
    owner.rotatedOffset = orientation.rotate(lineOffset);
    owner.lineSegment->end = &owner.rotatedOffset;
}

bool CollisionObject::collidesWith(CollisionObject& other)
{
    if (collisionType == SPHERE && other.collisionType == SPHERE) {
        return sphere->collidesWith(*other.sphere);
    }
    if (collisionType == LINE_SEGMENT && other.collisionType == SPHERE) {
        aimSegmentOf(*this);
        return other.sphere->collidesWith(*lineSegment);
    }
    if (collisionType == SPHERE && other.collisionType == LINE_SEGMENT) {
        aimSegmentOf(other);
        return sphere->collidesWith(*other.lineSegment);
    }
    return false;
}
