#pragma once

#include <list>

class Transform;

/// Finds the collisions between two sets of objects. Nothing in the client calls it: the server decides hits.
class CollisionHandler
{
public:
    /// Tests each pair once, in order, and reports each hit to both objects, a's first. Both lists must hold
    /// CollisionObjects only and should differ; either may be null. Costs |a| * |b| tests.
    static void handleCollissionsBetween(std::list<Transform*>* a, std::list<Transform*>* b);
};
