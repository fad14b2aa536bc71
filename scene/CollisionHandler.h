#pragma once

#include <list>

class Transform;

/// Finds the collisions between two sets of objects. Nothing in the client calls it: the server decides who
/// is hit.
class CollisionHandler
{
public:
    /// Tests each pair once, in order, and tells both objects of each hit, a's first. The lists must hold
    /// nothing but CollisionObjects, and should not be the same list; either may be null. Costs |a| * |b|
    /// tests.
    static void handleCollissionsBetween(std::list<Transform*>* a, std::list<Transform*>* b);
};
