#include "math/Vector3.h"

#include "tests/math/Near.h"

#include <limits>

TEST(Vector, ArithmeticIsComponentWiseButVectorTimesVectorIsTheDotProduct)
{
    const Vector3 a(1, 2, 3);
    const Vector3 b(4, -5, 6);
    EXPECT_EQ(a + b, Vector3(5, -3, 9));
    EXPECT_EQ(a - b, Vector3(-3, 7, -3));
    EXPECT_EQ(-a, Vector3(-1, -2, -3));
    EXPECT_EQ(2.0F * a, a * 2.0F);
    EXPECT_EQ(a * b, 12.0F);
    Vector3 c = a;
    EXPECT_EQ(((c += b) -= a) *= 3.0F, Vector3(12, -15, 18));
    EXPECT_EQ(c, Vector3(12, -15, 18)) << "the operators work in place";
    EXPECT_EQ(Vector3(2, 3, 6).length(), 7.0F);
    EXPECT_EQ(Vector3(3, 4, 7).distanceSquared({1, 1, 1}), 49.0F);
    EXPECT_EQ(Vector3::lerp(a, b, 2.0F), Vector3(7, -12, 9)) << "not clamped";
}

TEST(Vector, CrossProductsAndNormalsAreRightHanded)
{
    EXPECT_EQ(Vector3(1, 0, 0).crossProduct({0, 1, 0}), Vector3(0, 0, 1));
    EXPECT_EQ(Vector3(1, 2, 3).crossProduct({4, 5, 7}), Vector3(-1, 5, -3));
    EXPECT_EQ(ComputeNormal({0, 0, 0}, {5, 0, 0}, {0, 5, 0}), Vector3(0, 0, 1));
    EXPECT_EQ(ComputeNormal({0, 0, 0}, {0, 5, 0}, {5, 0, 0}), Vector3(0, 0, -1));
    EXPECT_EQ(ComputeNormal({1, 1, 1}, {1, 1, 1}, {1, 1, 1}), Vector3()) << "no area, no normal";
}

TEST(Vector, ComparingNeedsAllThreeComponents)
{
    EXPECT_TRUE(Vector3(0, 0, 0) < Vector3(1, 1, 1));
    EXPECT_TRUE(Vector3(1, 1, 1) > Vector3(0, 0, 0));
    for (const Vector3& oneEqual : {Vector3(0, 1, 1), Vector3(1, 0, 1), Vector3(1, 1, 0)}) {
        EXPECT_FALSE(Vector3() < oneEqual) << oneEqual.toString();
        EXPECT_FALSE(oneEqual > Vector3()) << oneEqual.toString();
    }
    const Vector3 unknown(std::numeric_limits<float>::quiet_NaN(), 0, 0);
    EXPECT_FALSE(unknown == unknown);
}

TEST(Vector, NormalisingLeavesWhatIsTooShortAlone)
{
    const Vector3 table[][2] = {
        {{0, -3, 4}, {0, -0.6F, 0.8F}}, {{0, 2e-8F, 0}, {0, 1, 0}}, {{0, 1e-9F, 0}, {0, 1e-9F, 0}}, {{}, {}}};
    for (const auto& [from, expected] : table) {
        Vector3 v = from;
        v.normalise();
        EXPECT_TRUE(isNear(v, expected));
    }
}

TEST(Vector, AnIndexOutOfBoundsPrintsAComplaintAndYieldsZero)
{
    const Vector3 v(1, 2, 3);
    EXPECT_EQ(Vector3(v[0], v[1], v[2]), v);
    testing::internal::CaptureStdout();
    EXPECT_EQ(v[3], 0.0F);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Index out of bounds (Vector3)\n");
}

TEST(Vector, TheTextHasSixDecimalsAndHoldsTheLargestFloats)
{
    testing::internal::CaptureStdout();
    Vector3(1, -2.5F, 3).print();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "(1.000000,-2.500000,3.000000)");
    const std::string largest = "-340282346638528859811704183484516925440.000000";
    const float low = std::numeric_limits<float>::lowest();
    EXPECT_EQ(Vector3(low, low, low).toString(), "(" + largest + "," + largest + "," + largest + ")");
}
