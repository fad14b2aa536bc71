#include "math/Matrix4.h"
#include "math/SaturatingTruncation.h"
#include "tests/math/Near.h"

#include <climits>
#include <cmath>
#include <limits>

namespace {

const Vector3 axisX(1, 0, 0), axisY(0, 1, 0), axisZ(0, 0, 1);
const Quaternion q1234(1, 2, 3, 4);
const Matrix3 three(1, 2, 3, 4, 5, 6, 7, 8, 9);
const Matrix4 four(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16);

Quaternion turn(float degrees, Vector3 axis)
{
    return Quaternion::FromAxisAngle(degrees * 3.14159265F / 180.0F, axis);
}

}  // namespace

TEST(Vector, ArithmeticAndComparison)
{
    const Vector3 a(1, 2, 3), b(4, -5, 6);
    Vector3 c = a;
    EXPECT_EQ(((c += b) -= -a) *= 3.0F, Vector3(18, -3, 36));
    EXPECT_EQ(c, Vector3(18, -3, 36)) << "in place";
    EXPECT_EQ(a * b, 12.0F) << "the dot product";
    EXPECT_EQ(a.distanceSquared({4, 4, 9}), 49.0F);
    EXPECT_EQ(Vector3::lerp(a, b, 2.0F), Vector3(7, -12, 9)) << "not clamped";
    EXPECT_EQ(ComputeNormal({}, {5, 0, 0}, {0, 5, 0}), axisZ) << "right-handed";
    EXPECT_EQ(ComputeNormal(a, a, a), Vector3()) << "no area, no normal";
    EXPECT_FLOAT_EQ(ComputeNormal({}, {1e-4F, 0, 0}, {0, 2e-4F, 0}).z, 1) << "2e-8 is normalised";
    EXPECT_LT(ComputeNormal({}, {1e-5F, 0, 0}, {0, 1e-4F, 0}).z, 1e-8F) << "1e-9 is not";
    EXPECT_TRUE(Vector3() < Vector3(1, 1, 1) && Vector3(1, 1, 1) > Vector3());
    for (const Vector3& oneEqual : {Vector3(0, 1, 1), Vector3(1, 0, 1), Vector3(1, 1, 0)}) {
        EXPECT_FALSE(Vector3() < oneEqual || oneEqual > Vector3() || oneEqual == Vector3(1, 1, 1));
    }
}

TEST(Text, FormatsOfAllClasses)
{
    constexpr float low = std::numeric_limits<float>::lowest();
    EXPECT_EQ(Vector3(low, low, low).toString().size(), 3 * std::to_string(low).size() + 4);
    const Vector3 v(1, -2.5F, 3);
    testing::internal::CaptureStdout();
    v.print();
    EXPECT_EQ(Vector3(v[0], v[1], v[2]) * (1 + v[3]), v);
    q1234.print();
    Matrix3(three.m).print();
    Matrix4().print();
    EXPECT_EQ(
        testing::internal::GetCapturedStdout(),
        "(1.000000,-2.500000,3.000000)Index out of bounds (Vector3)\n(1.000000, 2.000000, 3.000000, 4.000000)"
        "| 1.000000 | 4.000000 | 7.000000 |\n| 2.000000 | 5.000000 | 8.000000 |\n| 3.000000 | 6.000000 | "
        "9.000000 |" +
            Matrix4(Matrix3()).toString() + "\n");
}

TEST(Quaternions, ProductsAndSigns)
{
    EXPECT_EQ(q1234 * Quaternion(5, 6, 7, 8), Quaternion(-60, 12, 30, 24));
    EXPECT_EQ(q1234 * Vector3(5, 6, 7), Quaternion(0, 5, 6, 7) * q1234) << "against the written order";
    EXPECT_EQ(Vector3(5, 6, 7) * q1234, q1234 * Quaternion(0, 5, 6, 7)) << "against it as well";
    EXPECT_EQ((axisX * Quaternion(HUGE_VALF, 3, 0, 0)).w, -3.0F) << "w takes no part in w";
    EXPECT_EQ(q1234 + Vector3(10, 20, 30), Vector3(12, 23, 34)) << "w takes no part";
    EXPECT_EQ(-q1234.negation(), Quaternion(-1, 2, 3, 4));
    Quaternion tooShort(0, 0, 1e-9F, 0);
    tooShort.normalise();
    EXPECT_EQ(tooShort, Quaternion(0, 0, 1e-9F, 0));
    EXPECT_EQ(Quaternion(0.3F, 0, 0, 0).computeW(), -1.0F);
    EXPECT_EQ(Quaternion(0.3F, 0, 0.5F, 0).computeW(), 0.0F);
}

TEST(Quaternions, AnglesArcsAndPowers)
{
    expectNear(turn(180, {0, 7, 0}), Quaternion(0, 0, 7, 0));  // the axis is not normalised
    const Quaternion arc(Vector3(3, 6, -6), Vector3(-1, 1, 0.5F));
    expectNear(arc.rotate({2, 4, -4}), Vector3(-4, 4, 2));
    expectNear(arc.rotate({2, 1, 2}), Vector3(2, 1, 2));  // the axis stands still
    for (const auto& [a, b, c] : {Vector3(20, 40, 60), Vector3(-100, 15, 200)}) {
        expectNear(Quaternion::FromEuler(a, b, c), turn(a, axisX) * turn(b, axisY) * turn(c, axisZ));
    }
    for (const int power : {3, -1}) {
        const auto degrees = static_cast<float>(30 * power);
        expectNear(turn(30, axisX).exponentiation(power), turn(degrees, axisX));
    }
    for (const float w : {0.99995F, -0.99995F}) {
        EXPECT_EQ(Quaternion(w, 0, 0, 0.01F).exponentiation(3), Quaternion());
    }
    EXPECT_NE(Quaternion(0.9998F, 0, 0, 0.02F).exponentiation(3), Quaternion());
}

TEST(Quaternions, SlerpTakesTheShorterArc)
{
    const Quaternion start = turn(20, axisZ), end = turn(110, axisZ);
    for (const float t : {0.0F, 1.0F / 3, 1.0F, 2.0F, -1.0F}) {
        expectNear(Quaternion::Slerp(start, end, t), turn(20 + 90 * t, axisZ));
        expectNear(Quaternion::Slerp(start, -end, t), -turn(20 + 90 * t, axisZ));
    }
    expectNear(Quaternion::Slerp(start, start, 0.3F), start);
    expectNear(Quaternion::Slerp(start, -start, 0.3F), -start);
    EXPECT_EQ(Quaternion::Slerp({}, {3, 4, 0, 0}, 0.5F), Quaternion(2, 2, 0, 0)) << "linear, not normalised";
    expectNear(Quaternion::Slerp({}, {5e-7F, 1, 0, 0}, 0), -Quaternion());  // below 1e-6 counts as far
    expectNear(Quaternion::Slerp({}, {2e-6F, 1, 0, 0}, 0), Quaternion());
}

TEST(Matrices, Arithmetic)
{
    EXPECT_EQ(four * Vector3(1, 10, 100), Vector3(951 + 13, 1062 + 14, 1173 + 15)) << "no division by w";
    const Matrix3 other(2, -1, 0, 3, 1, 4, 0, 5, -2);
    EXPECT_EQ((other * three) * axisY, other * (three * axisY));
    EXPECT_EQ((Matrix4(other) * four) * Vector3(1, -2, 3), other * (four * Vector3(1, -2, 3)));
    // compared as text, which shows every element
    EXPECT_EQ(three.transpose().toString(), Matrix3(1, 4, 7, 2, 5, 8, 3, 6, 9).toString());
    EXPECT_EQ(Matrix4(four.m).transpose().toMat3().toString(),
              Matrix3(1, 5, 9, 2, 6, 10, 3, 7, 11).toString());
    EXPECT_EQ((3.0F * three - three + three).toString(), Matrix3(3, 6, 9, 12, 15, 18, 21, 24, 27).toString());
    EXPECT_EQ((four + four - 3.0F * four).toString(), (-1.0F * four).toString());
    EXPECT_EQ(three.invers().toString(), Matrix3().toString()) << "nothing is inverted";
}

TEST(Matrices, RotationsAndQuaternionsConvertBothWays)
{
    // each component dominates, or is the only one
    for (const Quaternion& q : {Quaternion(0.8F, 0.36F, -0.48F, 0), Quaternion(0.1F, 0.9F, 0.3F, 0.3F),
                                Quaternion(0.1F, -0.3F, 0.9F, 0.3F), Quaternion(0.1F, 0.3F, 0.3F, -0.9F),
                                Quaternion(0, 1, 0, 0), Quaternion(0, 0, 1, 0), Quaternion(0, 0, 0, 1)}) {
        const Matrix3 matrix = q.toRotationMatrix();
        expectNear(matrix * Vector3(1, 2, 3), q.rotate({1, 2, 3}));
        Quaternion back;
        Matrix4(matrix).CalcRotation(&back);
        expectNear(back.dotProduct(q) < 0 ? -back : back, q);
    }
}

TEST(SaturatingTruncation, HoldsAtTheEndsOfInt)
{
    EXPECT_EQ(saturatingTruncation(2147483646.5), INT_MAX - 1);
    EXPECT_EQ(saturatingTruncation(-2147483647.5), INT_MIN + 1);
    for (const double beyond : {2147483648.0, HUGE_VAL}) {
        EXPECT_EQ(saturatingTruncation(beyond), INT_MAX);
        EXPECT_EQ(saturatingTruncation(-beyond - 1), INT_MIN);
    }
    EXPECT_EQ(saturatingTruncation(std::nan("")), 0);
}
