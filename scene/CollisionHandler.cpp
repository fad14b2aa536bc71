#include "scene/CollisionHandler.h"

#include "scene/CollisionObject.h"

void CollisionHandler::handleCollissionsBetween(std::list<Transform*>* a, std::list<Transform*>* b)
{
    if (a == nullptr || b == nullptr) {
        return;
    }
    for (Transform* first : *a) {
        auto* x = static_cast<CollisionObject*>(first);
        for (Transform* second : *b) {
            auto* y = static_cast<CollisionObject*>(second);
            if (x->collidesWith(*y)) {
                x->collisionResponse(y);
                y->collisionResponse(x);
            }
        }
    }
}
