#pragma once

#include "math/Vector3.h"

class LineSegment;

/// A spherical collision volume around a point owned by another object.
class Sphere
{
public:
    /// radius in world units; *centerPoint must outlive the sphere.
    Sphere(Vector3* centerPoint, float sphereRadius) : center(centerPoint), radius(sphereRadius) {}

    bool collidesWith(Sphere const& other) const;
    bool collidesWith(LineSegment const& segment) const;

    /// Whether two spheres touch or overlap. If so, *contact becomes the point of the smaller sphere's
    /// surface towards the larger's centre. If the radii are equal, b counts as the smaller sphere.
    static bool sphereSphere(Sphere const& a, Sphere const& b, Vector3* contact);

    /// Whether the segment's whole line comes within the sphere's radius. So a sphere beyond either end but
    /// near the line counts as hit, on purpose.
    static bool sphereLineSegment(Sphere const& s, LineSegment const& l);

    Vector3* center;  ///< not owned
    float radius;
};
