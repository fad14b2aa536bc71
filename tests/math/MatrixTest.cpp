#include "math/Matrix4.h"

#include "math/Quaternion.h"
#include "tests/math/Near.h"

#include <vector>

namespace {

template <class Matrix>
std::vector<float> elements(const Matrix& matrix)
{
    return {std::begin(matrix.m), std::end(matrix.m)};
}

template <class Matrix>
std::string printed(const Matrix& matrix)
{
    testing::internal::CaptureStdout();
    matrix.print();
    return testing::internal::GetCapturedStdout();
}

const Matrix3 three(1, 2, 3, 4, 5, 6, 7, 8, 9);
const Matrix4 four(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16);

}  // namespace

TEST(Matrices, AreFilledColumnByColumnShownRowByRowAndOnlyTheLargerPrintsALineEnd)
{
    EXPECT_EQ(elements(Matrix3(three.m)), (std::vector<float>{1, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(elements(Matrix4(four.m)), elements(four));
    EXPECT_EQ(printed(three),
              "| 1.000000 | 4.000000 | 7.000000 |\n| 2.000000 | 5.000000 | 8.000000 |\n"
              "| 3.000000 | 6.000000 | 9.000000 |");
    EXPECT_EQ(
        printed(four),
        "| 1.000000 | 5.000000 | 9.000000 | 13.000000 |\n| 2.000000 | 6.000000 | 10.000000 | 14.000000 |\n"
        "| 3.000000 | 7.000000 | 11.000000 | 15.000000 |\n| 4.000000 | 8.000000 | 12.000000 | 16.000000 |\n");
}

TEST(Matrices, MapVectorsByTheirColumnsAndProductsApplyTheRightFactorFirst)
{
    EXPECT_EQ(three * Vector3(1, 10, 100), Vector3(741, 852, 963));
    EXPECT_EQ(four * Vector3(1, 10, 100), Vector3(951 + 13, 1062 + 14, 1173 + 15)) << "no division by w";
    const Matrix3 other(2, -1, 0, 3, 1, 4, 0, 5, -2);
    EXPECT_EQ((other * three) * Vector3(1, -2, 3), other * (three * Vector3(1, -2, 3)));
    const Matrix4 move(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 5, 6, 7, 1);
    const Matrix4 scale(2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 0, 0, 0, 1);
    EXPECT_EQ(elements(scale * move),
              (std::vector<float>{2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 10, 18, 28, 1}));
}

TEST(Matrices, ArithmeticAndTransposeWorkOnAllElements)
{
    EXPECT_EQ(elements(three.transpose()), (std::vector<float>{1, 4, 7, 2, 5, 8, 3, 6, 9}));
    EXPECT_EQ(elements(four.transpose()),
              (std::vector<float>{1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15, 4, 8, 12, 16}));
    EXPECT_EQ(elements(three * 3.0F - three), elements(three + three));
    EXPECT_EQ(elements(four * 3.0F - four), elements(four + four));
    EXPECT_EQ(elements(2.0F * three), (std::vector<float>{2, 4, 6, 8, 10, 12, 14, 16, 18}));
    EXPECT_EQ((2.0F * four).m[15], 32.0F);
}

TEST(Matrices, WidenAndNarrowAndHaveNoInverse)
{
    EXPECT_EQ(elements(Matrix4(three)), (std::vector<float>{1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0, 0, 0, 0, 1}));
    EXPECT_EQ(elements(four.toMat3()), (std::vector<float>{1, 2, 3, 5, 6, 7, 9, 10, 11}));
    EXPECT_EQ(elements(three.invers()), elements(Matrix3())) << "always the identity";
}

// Both directions: quaternion to matrix agrees with rotate(), and matrix to quaternion is its inverse
// whichever component dominates.
TEST(Matrices, RotationsComeBackAsTheirQuaternions)
{
    for (Quaternion q : {Quaternion(), Quaternion(0.8F, 0.36F, -0.48F, 0), Quaternion(0, 1, 0, 0),
                         Quaternion(0, 0, 1, 0), Quaternion(0, 0, 0, 1), Quaternion(0.1F, 0.9F, 0.3F, 0.3F),
                         Quaternion(0.1F, -0.3F, 0.9F, 0.3F), Quaternion(0.1F, 0.3F, 0.3F, -0.9F)}) {
        q.normalise();
        const Matrix3 matrix = q.toRotationMatrix();
        EXPECT_TRUE(isNear(matrix * Vector3(1, 2, 3), q.rotate({1, 2, 3}))) << q.toString();
        Quaternion back;
        Matrix4(matrix).CalcRotation(&back);
        EXPECT_TRUE(isNear(back.dotProduct(q) < 0 ? -back : back, q));
    }
}
