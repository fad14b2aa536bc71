#include "scene/Sphere.h"

#include "scene/LineSegment.h"

bool Sphere::collidesWith(Sphere const& other) const
{
    Vector3 contact;
    return sphereSphere(*this, other, &contact);
}

bool Sphere::collidesWith(LineSegment const& segment) const
{
    return sphereLineSegment(*this, segment);
}

bool Sphere::sphereSphere(Sphere const& a, Sphere const& b, Vector3* contact)
{
    const float reach = a.radius + b.radius;
    if (reach * reach < a.center->distanceSquared(*b.center)) {
        return false;
    }
    Vector3 towardsB = *b.center - *a.center;
    towardsB.normalise();
    *contact = b.radius > a.radius ? *a.center + towardsB * a.radius : *b.center + (-towardsB) * b.radius;
    return true;
}

bool Sphere::sphereLineSegment(Sphere const& s, LineSegment const& l)
{
    const Vector3 direction = *l.end;
    const Vector3 toCenter = *s.center - *l.start;
    const float radiusSquared = s.radius * s.radius;
    const float distanceToStart = toCenter * toCenter;  // squared, like all distances here
    const float along = toCenter * direction;
    if (distanceToStart <= radiusSquared && along <= 0.0F) {
        return true;
    }
    const float lengthSquared = direction * direction;
    if (along >= lengthSquared && along * -2.0F + distanceToStart + lengthSquared <= radiusSquared) {
        return true;
    }
    return distanceToStart - along * along / lengthSquared <= radiusSquared;
}
