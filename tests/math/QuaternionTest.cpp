#include "math/Quaternion.h"

#include "tests/math/Near.h"

namespace {

const Vector3 axisX(1, 0, 0);
const Vector3 axisY(0, 1, 0);
const Vector3 axisZ(0, 0, 1);
const Quaternion q1234(1, 2, 3, 4);

}  // namespace

TEST(Quaternions, ProductsAreHamiltonsButWithAVectorTheyAreTakenAgainstTheWrittenOrder)
{
    EXPECT_EQ(q1234 * Quaternion(5, 6, 7, 8), Quaternion(-60, 12, 30, 24));
    EXPECT_EQ(Quaternion(5, 6, 7, 8) * q1234, Quaternion(-60, 20, 14, 32));
    const Quaternion pure(0, 5, 6, 7);
    EXPECT_EQ(q1234 * Vector3(5, 6, 7), pure * q1234);
    EXPECT_EQ(Vector3(5, 6, 7) * q1234, q1234 * pure);
}

TEST(Quaternions, ArithmeticIsComponentWiseAndOnlyTheMinusSignNegatesAllFour)
{
    EXPECT_EQ(q1234 + Quaternion(10, 20, 30, 40), Quaternion(11, 22, 33, 44));
    EXPECT_EQ(q1234 - Quaternion(10, 20, 30, 40), Quaternion(-9, -18, -27, -36));
    EXPECT_EQ(q1234 + Vector3(10, 20, 30), Vector3(12, 23, 34)) << "a vector: w takes no part";
    EXPECT_EQ(2.0F * q1234, Quaternion(2, 4, 6, 8));
    EXPECT_EQ(Quaternion::dotProduct(q1234, {5, 6, 7, 8}), 70.0F);
    EXPECT_EQ(-q1234, Quaternion(-1, -2, -3, -4));
    EXPECT_EQ(~q1234, Quaternion(1, -2, -3, -4));
    EXPECT_EQ(q1234.negation(), ~q1234);
    EXPECT_TRUE(q1234 != Quaternion(0, 2, 3, 4));
}

TEST(Quaternions, NormalisingLeavesWhatIsTooShortAlone)
{
    for (const auto& [from, expected] :
         {std::pair(Quaternion(2, -2, 2, -2), Quaternion(0.5F, -0.5F, 0.5F, -0.5F)),
          std::pair(Quaternion(0, 0, 1e-9F, 0), Quaternion(0, 0, 1e-9F, 0)),
          std::pair(Quaternion(0, 0, 0, 0), Quaternion(0, 0, 0, 0))}) {
        Quaternion q = from;
        q.normalise();
        EXPECT_TRUE(isNear(q, expected));
    }
}

TEST(Quaternions, RotatingTurnsRightHandedAndTheRightFactorFirst)
{
    EXPECT_TRUE(isNear(turn(90, axisZ).rotate(axisX), axisY));
    EXPECT_TRUE(isNear(turn(90, axisX).rotate(axisY), axisZ));
    EXPECT_TRUE(isNear((turn(90, axisX) * turn(90, axisZ)).rotate(axisX), axisZ));
}

TEST(Quaternions, TheShortestArcTurnsOneDirectionIntoTheOther)
{
    const Quaternion q(Vector3(3, 6, -6), Vector3(-1, 1, 0.5F));
    EXPECT_TRUE(isNear(q.rotate({1.0F / 3, 2.0F / 3, -2.0F / 3}), Vector3(-2.0F / 3, 2.0F / 3, 1.0F / 3)));
    EXPECT_TRUE(isNear(q.rotate({2, 1, 2}), Vector3(2, 1, 2))) << "the axis stands still";
}

TEST(Quaternions, AxisAnglesAreRadiansAndEulerAnglesDegreesAppliedZThenYThenX)
{
    EXPECT_TRUE(isNear(Quaternion::FromAxisAngle(3.14159265F, {0, 7, 0}), Quaternion(0, 0, 7, 0)))
        << "the axis is not normalised";
    EXPECT_TRUE(isNear(Quaternion::FromEuler(90, 0, 0), Quaternion(0.70710678F, 0.70710678F, 0, 0)));
    const float table[][3] = {{30, 0, 0}, {0, -50, 0}, {0, 0, 70}, {20, 40, 60}, {-100, 15, 200}};
    for (const auto& [a, b, c] : table) {
        EXPECT_TRUE(isNear(Quaternion::FromEuler(a, b, c), turn(a, axisX) * turn(b, axisY) * turn(c, axisZ)))
            << a << " " << b << " " << c;
    }
}

TEST(Slerp, FollowsTheShorterArcAtConstantSpeedWithoutClamping)
{
    const Quaternion start = turn(20, axisZ);
    const Quaternion end = turn(110, axisZ);
    const float table[][2] = {{0, 20}, {1.0F / 3, 50}, {0.5F, 65}, {1, 110}, {2, 200}, {-1, -70}};
    for (const auto& [t, degrees] : table) {
        EXPECT_TRUE(isNear(Quaternion::Slerp(start, end, t), turn(degrees, axisZ))) << t;
        // The same orientation on the far side: the first one's sign changes, not the way taken.
        EXPECT_TRUE(isNear(Quaternion::Slerp(start, -end, t), -turn(degrees, axisZ))) << t;
    }
}

TEST(Slerp, IsLinearAtTheEndsAndCountsASlightlyPositiveProductAsTheFarSide)
{
    const Quaternion q = turn(40, axisY);
    EXPECT_TRUE(isNear(Quaternion::Slerp(q, q, 0.3F), q));
    EXPECT_TRUE(isNear(Quaternion::Slerp(q, -q, 0.3F), -q));
    EXPECT_EQ(Quaternion::Slerp({1, 0, 0, 0}, {3, 4, 0, 0}, 0.5F), Quaternion(2, 2, 0, 0))
        << "not normalised";
    EXPECT_TRUE(isNear(Quaternion::Slerp({}, {5e-7F, 1, 0, 0}, 0), -Quaternion()));
    EXPECT_TRUE(isNear(Quaternion::Slerp({}, {2e-6F, 1, 0, 0}, 0), Quaternion()));
}

TEST(Quaternions, PowersMultiplyTheAngleButAlmostNoTurnIsNoneAtAll)
{
    const Vector3 axis = Vector3(1, 2, 2) * (1.0F / 3.0F);
    for (const int power : {3, 1, 0, -1, 12}) {
        EXPECT_TRUE(
            isNear(turn(30, axis).exponentiation(power), turn(30.0F * static_cast<float>(power), axis)));
    }
    EXPECT_EQ(Quaternion(0.99995F, 0, 0, 0.01F).exponentiation(3), Quaternion());
    EXPECT_EQ(Quaternion(-0.99995F, 0, 0, 0.01F).exponentiation(3), Quaternion());
    EXPECT_NE(Quaternion(0.9998F, 0, 0, 0.02F).exponentiation(3), Quaternion());
}

TEST(Quaternions, ComputeWComparesWithOneNotWithZero)
{
    EXPECT_EQ(Quaternion(0.3F, 0, 0, 0).computeW(), -1.0F);
    EXPECT_EQ(Quaternion(0.3F, 0, 0.5F, 0).computeW(), 0.0F);
}

TEST(Quaternions, TheTextStartsWithTheScalarPart)
{
    testing::internal::CaptureStdout();
    Quaternion(1, -2, 3, 4).print();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "(1.000000, -2.000000, 3.000000, 4.000000)");
}
