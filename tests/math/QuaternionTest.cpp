#include "math/Quaternion.h"

#include "tests/math/Near.h"

namespace {

const Vector3 axisX(1, 0, 0);
const Vector3 axisY(0, 1, 0);
const Vector3 axisZ(0, 0, 1);
const Quaternion q1234(1, 2, 3, 4);

Quaternion turn(float degrees, Vector3 axis)
{
    return Quaternion::FromAxisAngle(degrees * 3.14159265F / 180.0F, axis);
}

}  // namespace

TEST(Quaternions, ProductsAreHamiltonsButWithAVectorTheyAreTakenAgainstTheWrittenOrder)
{
    EXPECT_EQ(q1234 * Quaternion(5, 6, 7, 8), Quaternion(-60, 12, 30, 24));
    EXPECT_EQ(q1234 * Vector3(5, 6, 7), Quaternion(0, 5, 6, 7) * q1234);
    EXPECT_EQ(Vector3(5, 6, 7) * q1234, q1234 * Quaternion(0, 5, 6, 7));
    EXPECT_EQ(q1234 + Vector3(10, 20, 30), Vector3(12, 23, 34)) << "a vector: w takes no part";
    EXPECT_EQ(-q1234, Quaternion(-1, -2, -3, -4));
    EXPECT_EQ(q1234.negation(), Quaternion(1, -2, -3, -4));
    Quaternion tooShort(0, 0, 1e-9F, 0);
    tooShort.normalise();
    EXPECT_EQ(tooShort, Quaternion(0, 0, 1e-9F, 0));
}

TEST(Quaternions, TurnRightHandedByRadiansOrByTheShortestArcOrByDegreesAboutZThenYThenX)
{
    expectNear(turn(180, {0, 7, 0}), Quaternion(0, 0, 7, 0));  // the axis is not normalised
    expectNear((turn(90, axisX) * turn(90, axisZ)).rotate(axisX), axisZ);
    const Quaternion arc(Vector3(3, 6, -6), Vector3(-1, 1, 0.5F));
    expectNear(arc.rotate({2, 4, -4}), Vector3(-4, 4, 2));
    expectNear(arc.rotate({2, 1, 2}), Vector3(2, 1, 2));  // the axis stands still
    for (const auto& [a, b, c] : {Vector3(20, 40, 60), Vector3(-100, 15, 200)}) {
        expectNear(Quaternion::FromEuler(a, b, c), turn(a, axisX) * turn(b, axisY) * turn(c, axisZ));
    }
}

TEST(Slerp, FollowsTheShorterArcAtConstantSpeedWithoutClamping)
{
    const Quaternion start = turn(20, axisZ);
    const Quaternion end = turn(110, axisZ);
    const float table[][2] = {{0, 20}, {1.0F / 3, 50}, {1, 110}, {2, 200}, {-1, -70}};
    for (const auto& [t, degrees] : table) {
        expectNear(Quaternion::Slerp(start, end, t), turn(degrees, axisZ));
        // The same orientation on the far side: the first one's sign changes, not the way taken.
        expectNear(Quaternion::Slerp(start, -end, t), -turn(degrees, axisZ));
    }
}

TEST(Slerp, IsLinearAtTheEndsAndCountsASlightlyPositiveProductAsTheFarSide)
{
    const Quaternion q = turn(40, axisY);
    expectNear(Quaternion::Slerp(q, q, 0.3F), q);
    expectNear(Quaternion::Slerp(q, -q, 0.3F), -q);
    EXPECT_EQ(Quaternion::Slerp({}, {3, 4, 0, 0}, 0.5F), Quaternion(2, 2, 0, 0)) << "not normalised";
    expectNear(Quaternion::Slerp({}, {5e-7F, 1, 0, 0}, 0), -Quaternion());
    expectNear(Quaternion::Slerp({}, {2e-6F, 1, 0, 0}, 0), Quaternion());
}

TEST(Quaternions, PowersMultiplyTheAngleButAlmostNoTurnIsNoneAtAll)
{
    const Vector3 axis = Vector3(1, 2, 2) * (1.0F / 3.0F);
    expectNear(turn(30, axis).exponentiation(3), turn(90, axis));
    expectNear(turn(30, axis).exponentiation(-1), turn(-30, axis));
    for (const float w : {0.99995F, -0.99995F}) {
        EXPECT_EQ(Quaternion(w, 0, 0, 0.01F).exponentiation(3), Quaternion());
    }
    EXPECT_NE(Quaternion(0.9998F, 0, 0, 0.02F).exponentiation(3), Quaternion());
}

TEST(Quaternions, ComputeWComparesWithOneAndTheTextStartsWithTheScalarPart)
{
    EXPECT_EQ(Quaternion(0.3F, 0, 0, 0).computeW(), -1.0F);
    EXPECT_EQ(Quaternion(0.3F, 0, 0.5F, 0).computeW(), 0.0F);
    testing::internal::CaptureStdout();
    q1234.print();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "(1.000000, 2.000000, 3.000000, 4.000000)");
}
