#include "scene/CollisionHandler.h"
#include "scene/CollisionObject.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

namespace {

std::string responses;

struct Hit : CollisionObject
{
    Hit(char hitName, Vector3 at) : CollisionObject(0ULL), name(1, hitName) { position = at; }
    void collisionResponse(CollisionObject* other) override
    {
        responses += name + static_cast<Hit*>(other)->name + ' ';
    }

    std::string name;
};

}  // namespace

TEST(Collision, SpheresCollideWhenTheyTouch)
{
    const std::tuple<float, float, float, bool, float> cases[] = {
        {1.0F, 1.0F, 2.0F, true, 1.0F}, {1.0F, 1.0F, 2.0001F, false, 0.0F},
        {1.0F, 1.0F, 1.5F, true, 0.5F},  // equal radii: on b's surface towards a
        {1.0F, 3.0F, 3.5F, true, 1.0F},  // a is smaller: on a's surface towards b
        {3.0F, 1.0F, 3.5F, true, 2.5F},  // b is smaller: on b's surface towards a
    };
    for (const auto& [radiusA, radiusB, distance, hit, contactX] : cases) {
        Vector3 a, b(distance, 0.0F, 0.0F), contact;
        EXPECT_EQ(Sphere::sphereSphere({&a, radiusA}, {&b, radiusB}, &contact), hit) << distance;
        EXPECT_EQ(contact, Vector3(contactX, 0.0F, 0.0F)) << contact.toString();
    }
}

TEST(Collision, ASegmentHitsTheSphereOnItsLine)
{
    const std::tuple<const char*, Vector3, Vector3, bool> cases[] = {
        {"touching the middle", {10, 0, 0}, {5, 1, 0}, true},
        {"just clear of it", {10, 0, 0}, {5, 1.01F, 0}, false},
        {"beside the extension beyond the end", {3, 4, 0}, {30 + 0.79F, 40 - 0.59F, 0}, true},
        {"beside the extension before the start", {1, 0, 0}, {-50, 0.9F, 0}, true},
        {"starts inside, a point without direction", {}, {0.5F, 0, 0}, true},
        {"a point outside", {}, {2, 0, 0}, false},
    };
    for (auto [what, direction, offset, hit] : cases) {
        Vector3 start(7, 8, 9), center = start + offset;
        EXPECT_EQ(Sphere(&center, 1.0F).collidesWith(LineSegment(&start, &direction)), hit) << what;
    }
}

TEST(Collision, ObjectsCollideByTheirFirstVolumeAndBothRespond)
{
    // the segment turns with its object, here to +x; from the sphere's side only its start counts
    Hit nothing('n', {}), sphere('s', {9, 0, 0}), segment('l', {}), far('f', {4, 0, 0}), side('d', {0, 0, 4});
    sphere.setSphere(1.0F);
    sphere.setLineSegment({1, 0, 0});
    sphere.position = {};  // the volume follows
    segment.setLineSegment({0, 0, 5});
    segment.setSphere(1.0F);
    segment.orientation = Quaternion::FromAxisAngle(1.5707964F, {0, 1, 0});
    far.setSphere(1.0F);
    side.setSphere(1.0F);
    std::list<Transform*> all = {&nothing, &sphere, &segment, &far, &side};
    CollisionHandler::handleCollissionsBetween(&all, &all);
    CollisionHandler::handleCollissionsBetween(nullptr, &all);
    CollisionHandler::handleCollissionsBetween(&all, nullptr);
    EXPECT_EQ(responses, "ss ss sl ls ls sl lf fl ff ff dd dd ");

    for (Hit* object : {&sphere, &segment}) {
        object->init();
        EXPECT_FALSE(object->collidesWith(far));
        object->setSphere(5.0F);
        EXPECT_TRUE(object->collidesWith(far)) << "any volume may follow init";
    }
    nothing.setLineSegment({0, 0, 1});
    EXPECT_TRUE(nothing.collidesWith(sphere));  // and dies with its segment
}
