#include "scene/LineSegment.h"

#include "scene/Sphere.h"

bool LineSegment::collidesWith(Sphere const& sphere) const
{
    return Sphere::sphereLineSegment(sphere, *this);
}
