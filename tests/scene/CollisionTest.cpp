#include "scene/CollisionHandler.h"
#include "scene/CollisionObject.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

const Vector3 origin;
const float quarterTurn = 1.5707964F;

std::vector<std::string> responses;

class Hit : public CollisionObject
{
public:
    Hit(const char* hitName, Vector3 at) : CollisionObject(0ULL), name(hitName) { position = at; }
    void collisionResponse(CollisionObject* other) override
    {
        responses.push_back(name + static_cast<Hit*>(other)->name);
    }

    std::string name;
};

}  // namespace

TEST(Collision, SpheresCollideWhenTheyTouch)
{
    const struct
    {
        float radiusA, radiusB, distance;
        bool hit;
        float contactX;
    } cases[] = {
        {1.0F, 1.0F, 2.0F, true, 1.0F},        {1.0F, 1.0F, 2.0001F, false, 0.0F},
        {1.0F, 1.0F, 1.5F, true, 0.5F},  // equal radii: on b's surface towards a
        {1.0F, 3.0F, 3.5F, true, 1.0F},  // a is smaller: on a's surface towards b
        {3.0F, 1.0F, 3.5F, true, 2.5F},  // b is smaller: on b's surface towards a
        {0.5F, 0.25F, 0.7499F, true, 0.4999F}, {0.5F, 0.25F, 0.7501F, false, 0.0F},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.distance);
        Vector3 a;
        Vector3 b(c.distance, 0.0F, 0.0F);
        Vector3 contact;
        EXPECT_EQ(Sphere::sphereSphere({&a, c.radiusA}, {&b, c.radiusB}, &contact), c.hit);
        EXPECT_EQ(Sphere(&a, c.radiusA).collidesWith(Sphere(&b, c.radiusB)), c.hit);
        if (c.hit) {
            EXPECT_LT(contact.distance({c.contactX, 0.0F, 0.0F}), 1e-5F) << contact.toString();
        }
    }
}

TEST(Collision, ASegmentHitsTheSphereOnItsLine)
{
    const struct
    {
        const char* what;
        Vector3 start, direction, center;
        bool hit;
    } cases[] = {
        {"beside the middle", origin, {10, 0, 0}, {5, 0.99F, 0}, true},
        {"touching the middle", origin, {10, 0, 0}, {5, 1, 0}, true},
        {"just clear of it", origin, {10, 0, 0}, {5, 1.01F, 0}, false},
        {"starts inside and points away", {0.5F, 0, 0}, {10, 0, 0}, origin, true},
        {"starts inside and points through", {-0.5F, 0, 0}, {10, 0, 0}, origin, true},
        {"ends inside", {-10, 0, 0}, {9.5F, 0, 0}, origin, true},
        {"beside the extension beyond the end", origin, {1, 0, 0}, {50, 0.9F, 0}, true},
        {"beside the extension before the start", origin, {1, 0, 0}, {-50, 0.9F, 0}, true},
        {"beyond the end and beside the line", origin, {1, 0, 0}, {50, 1.1F, 0}, false},
        {"starts inside, a point without direction", {0.5F, 0, 0}, origin, origin, true},
        {"a point outside", {2, 0, 0}, origin, origin, false},
        {"slanted", {0, 0, 0}, {3, 4, 0}, {3 + 0.79F, 4 - 0.59F, 0}, true},
        {"slanted, clear", {0, 0, 0}, {3, 4, 0}, {3 + 0.81F, 4 - 0.61F, 0}, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        Vector3 start = c.start;
        Vector3 direction = c.direction;
        Vector3 center = c.center;
        const Sphere sphere(&center, 1.0F);
        const LineSegment segment(&start, &direction);
        EXPECT_EQ(sphere.collidesWith(segment), c.hit);
        EXPECT_EQ(segment.collidesWith(sphere), c.hit);
    }
}

TEST(Collision, OnlySphereAndSphereOrSphereAndSegmentCollide)
{
    Hit nothing("n", origin);
    Hit sphere("s", origin);
    Hit segment("l", origin);
    Hit otherSegment("m", origin);
    sphere.setSphere(1.0F);
    segment.setLineSegment({1.0F, 0.0F, 0.0F});
    otherSegment.setLineSegment({0.0F, 1.0F, 0.0F});
    const struct
    {
        Hit *a, *b;
        bool hit;
    } cases[] = {{&nothing, &nothing, false}, {&nothing, &sphere, false},       {&sphere, &nothing, false},
                 {&nothing, &segment, false}, {&segment, &otherSegment, false}, {&sphere, &sphere, true},
                 {&sphere, &segment, true},   {&segment, &sphere, true}};
    for (const auto& c : cases) {
        EXPECT_EQ(c.a->collidesWith(*c.b), c.hit) << c.a->name << c.b->name;
    }
}

TEST(Collision, ASegmentTurnsWithItsObjectButFromTheSpheresSideOnlyItsStartCounts)
{
    Hit segment("l", origin);
    segment.setLineSegment({0.0F, 0.0F, 5.0F});
    segment.orientation = Quaternion::FromAxisAngle(quarterTurn, {0.0F, 1.0F, 0.0F});  // now along +x
    Hit ahead("x", {4.0F, 0.0F, 0.0F});
    Hit aside("z", {0.0F, 0.0F, 4.0F});
    Hit atStart("o", {0.5F, 0.0F, 0.0F});
    for (Hit* sphere : {&ahead, &aside, &atStart}) {
        sphere->setSphere(1.0F);
    }
    for (int pass = 0; pass < 2; ++pass) {  // no test leaves a trace that the next could see
        EXPECT_TRUE(segment.collidesWith(ahead));
        EXPECT_FALSE(segment.collidesWith(aside));
        EXPECT_FALSE(ahead.collidesWith(segment));
        EXPECT_FALSE(aside.collidesWith(segment));
        EXPECT_TRUE(atStart.collidesWith(segment));
    }
}

TEST(Collision, TheFirstVolumeStaysAndFollowsItsObject)
{
    Hit object("a", origin);
    object.setLineSegment({1.0F, 0.0F, 0.0F});
    object.setSphere(5.0F);
    object.setLineSegment({9.0F, 0.0F, 0.0F});
    EXPECT_EQ(object.collisionType, 2U);
    EXPECT_EQ(object.sphere, nullptr);
    EXPECT_EQ(object.lineOffset, Vector3(1.0F, 0.0F, 0.0F));

    Hit sphere("s", {100.0F, 0.0F, 0.0F});
    sphere.setSphere(1.0F);
    sphere.setSphere(50.0F);
    EXPECT_EQ(sphere.collisionType, 1U);
    EXPECT_EQ(sphere.sphere->radius, 1.0F);
    Hit target("t", origin);
    target.setSphere(1.0F);
    EXPECT_FALSE(sphere.collidesWith(target));
    sphere.position = {1.0F, 0.0F, 0.0F};
    EXPECT_TRUE(sphere.collidesWith(target));
}

TEST(Collision, TheHandlerTellsBothObjectsOfEachHitInOrder)
{
    Hit a("a", origin);
    Hit b("b", {10.0F, 0.0F, 0.0F});
    Hit c("c", {1.0F, 0.0F, 0.0F});
    Hit d("d", {2.0F, 0.0F, 0.0F});
    for (Hit* object : {&a, &b, &c, &d}) {
        object->setSphere(1.0F);
    }
    std::list<Transform*> first = {&a, &b};
    std::list<Transform*> second = {&c, &d};
    responses.clear();
    CollisionHandler::handleCollissionsBetween(&first, &second);
    EXPECT_EQ(responses, (std::vector<std::string>{"ac", "ca", "ad", "da"}));

    responses.clear();
    CollisionHandler::handleCollissionsBetween(nullptr, &second);
    CollisionHandler::handleCollissionsBetween(&first, nullptr);
    EXPECT_TRUE(responses.empty());
}
