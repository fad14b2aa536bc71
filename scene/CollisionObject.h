#pragma once

#include "math/Vector3.h"
#include "scene/LineSegment.h"
#include "scene/Sphere.h"
#include "scene/Transform.h"

/// An object of the scene that may carry one collision volume, which follows its position and orientation.
///
/// The first volume given stays; later ones are ignored. Main thread only.
class CollisionObject : public Transform
{
public:
    enum CollisionType : unsigned int
    {
        NO_VOLUME = 0,
        SPHERE = 1,
        LINE_SEGMENT = 2
    };

    explicit CollisionObject(unsigned long long id);
    CollisionObject(unsigned int high, unsigned int low);
    ~CollisionObject() override;
    CollisionObject(const CollisionObject&) = delete;
    CollisionObject& operator=(const CollisionObject&) = delete;

    /// Told of each hit, by CollisionHandler.
    virtual void collisionResponse(CollisionObject* /*other*/) {}

    void init();
    /// radius in world units.
    void setSphere(float radius);
    /// `offset` reaches from the object's position to the far end, in the object's own frame.
    void setLineSegment(Vector3 offset);

    /// Two spheres, or a sphere and a segment; anything else does not collide. Not symmetric: asked of the
    /// sphere, a segment counts as its start point alone, since the sphere's own (zero) offset is what gets
    /// rotated.
    bool collidesWith(CollisionObject& other);

    Sphere* sphere = nullptr;            ///< owned; null unless collisionType is SPHERE
    LineSegment* lineSegment = nullptr;  ///< owned; null unless collisionType is LINE_SEGMENT
    Vector3 lineOffset;                  ///< the segment's direction in the object's own frame
    unsigned int collisionType = NO_VOLUME;

private:
    void aimSegmentOf(CollisionObject& owner) const;

    Vector3
        rotatedOffset;  ///< what lineSegment->end points at from the first test on; every test writes it anew
};
