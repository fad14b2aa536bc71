#pragma once

#include "math/Vector3.h"

class LineSegment;

/// A spherical collision volume around a point that it does not own.
class Sphere
{
public:
    /// radius in world units; *centerPoint must outlive the sphere.
    Sphere(Vector3* centerPoint, float sphereRadius) : center(centerPoint), radius(sphereRadius) {}

    bool collidesWith(Sphere const& other) const;
    bool collidesWith(LineSegment const& segment) const;

    /// Whether two spheres touch or overlap; if so, *contact is the point of the smaller one's surface that
    /// lies deepest in the larger (of b's, where they are equal).
    static bool sphereSphere(Sphere const& a, Sphere const& b, Vector3* contact);

    /// Whether the sphere is hit by the segment, or lies beside its extension closer to the line than its
    /// radius: the generous answer is the intended one.
    static bool sphereLineSegment(Sphere const& s, LineSegment const& l);

    Vector3* center;  ///< not owned
    float radius;
};
