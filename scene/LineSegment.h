#pragma once

#include "math/Vector3.h"

class Sphere;

/// A collision volume: the points start + s * end for s from 0 to 1. Despite its name, `end` is the direction
/// and not the far end. Neither vector is owned.
class LineSegment
{
public:
    /// Both vectors must outlive the segment.
    LineSegment(Vector3* startPoint, Vector3* direction) : start(startPoint), end(direction) {}

    bool collidesWith(Sphere const& sphere) const;

    Vector3* start;
    Vector3* end;
};
