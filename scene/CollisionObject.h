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

    /// CollisionHandler calls this for each hit.
    virtual void collisionResponse(CollisionObject* /*other*/) {}

    void init();
    /// radius in world units.
    void setSphere(float radius);
    /// `offset` reaches from the object's position to the far end, in the object's own frame.
    void setLineSegment(Vector3 offset);

    /// Whether two spheres, or a sphere and a segment, collide; false for any other pair. Not symmetric, on
    /// purpose: called on the sphere it rotates the sphere's own zero offset. Then only the segment's start
    /// counts.
    bool collidesWith(CollisionObject& other);

    Sphere* sphere = nullptr;            ///< owned; null unless collisionType is SPHERE
    LineSegment* lineSegment = nullptr;  ///< owned; null unless collisionType is LINE_SEGMENT
    Vector3 lineOffset;                  ///< the segment's direction in the object's own frame
    unsigned int collisionType = NO_VOLUME;

private:
    void aimSegmentOf(CollisionObject& owner) const;

    Vector3 rotatedOffset;  ///< lineSegment->end points here from the first test on; each test rewrites it
};
