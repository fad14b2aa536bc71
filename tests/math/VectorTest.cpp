#include "math/Vector3.h"

#include <gtest/gtest.h>

#include <limits>

TEST(Vector, ArithmeticWorksInPlaceAndVectorTimesVectorIsTheDotProduct)
{
    const Vector3 a(1, 2, 3);
    const Vector3 b(4, -5, 6);
    Vector3 c = a;
    EXPECT_EQ(((c += b) -= -a) *= 3.0F, Vector3(18, -3, 36));
    EXPECT_EQ(c, Vector3(18, -3, 36));
    EXPECT_EQ(a * b, 12.0F);
    EXPECT_EQ(a.distanceSquared({4, 4, 9}), 49.0F);
    EXPECT_EQ(Vector3::lerp(a, b, 2.0F), Vector3(7, -12, 9)) << "not clamped";
    EXPECT_EQ(ComputeNormal({0, 0, 0}, {5, 0, 0}, {0, 5, 0}), Vector3(0, 0, 1)) << "right-handed";
    EXPECT_EQ(ComputeNormal(a, a, a), Vector3()) << "no area, no normal";
    EXPECT_FLOAT_EQ(ComputeNormal({}, {1e-4F, 0, 0}, {0, 2e-4F, 0}).z, 1);
    EXPECT_LT(ComputeNormal({}, {1e-5F, 0, 0}, {0, 1e-4F, 0}).z, 1e-8F) << "too short";
}

TEST(Vector, ComparingNeedsAllThreeComponents)
{
    EXPECT_TRUE(Vector3() < Vector3(1, 1, 1) && Vector3(1, 1, 1) > Vector3());
    for (const Vector3& oneEqual : {Vector3(0, 1, 1), Vector3(1, 0, 1), Vector3(1, 1, 0)}) {
        EXPECT_FALSE(Vector3() < oneEqual || oneEqual > Vector3() || oneEqual == Vector3(1, 1, 1));
    }
}

TEST(Vector, TheTextHoldsTheLargestFloatsAndAnIndexOutOfBoundsPrintsAComplaint)
{
    constexpr float low = std::numeric_limits<float>::lowest();
    EXPECT_EQ(Vector3(low, low, low).toString().size(), 3 * std::to_string(low).size() + 4);
    const Vector3 v(1, -2.5F, 3);
    testing::internal::CaptureStdout();
    v.print();
    EXPECT_EQ(Vector3(v[0], v[1], v[2]), v);
    EXPECT_EQ(v[3], 0.0F);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "(1.000000,-2.500000,3.000000)Index out of bounds (Vector3)\n");
}
