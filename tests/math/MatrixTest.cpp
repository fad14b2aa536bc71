#include "math/Matrix4.h"

#include "math/Quaternion.h"
#include "tests/math/Near.h"

namespace {

const Matrix3 three(1, 2, 3, 4, 5, 6, 7, 8, 9);
const Matrix4 four(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16);

}  // namespace

TEST(Matrices, AreFilledColumnByColumnShownRowByRowAndOnlyTheLargerPrintsALineEnd)
{
    testing::internal::CaptureStdout();
    Matrix3(three.m).print();
    Matrix4(three).print();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "| 1.000000 | 4.000000 | 7.000000 |\n| 2.000000 | 5.000000 | 8.000000 |\n"
              "| 3.000000 | 6.000000 | 9.000000 || 1.000000 | 4.000000 | 7.000000 | 0.000000 |\n"
              "| 2.000000 | 5.000000 | 8.000000 | 0.000000 |\n| 3.000000 | 6.000000 | 9.000000 | 0.000000 |\n"
              "| 0.000000 | 0.000000 | 0.000000 | 1.000000 |\n");
}

TEST(Matrices, MapVectorsByTheirColumnsAndProductsApplyTheRightFactorFirst)
{
    EXPECT_EQ(four * Vector3(1, 10, 100), Vector3(951 + 13, 1062 + 14, 1173 + 15)) << "no division by w";
    const Matrix3 other(2, -1, 0, 3, 1, 4, 0, 5, -2);
    EXPECT_EQ((other * three) * Vector3(1, -2, 3), other * (three * Vector3(1, -2, 3)));
    EXPECT_EQ((Matrix4(other) * four) * Vector3(1, -2, 3), other * (four * Vector3(1, -2, 3)));
}

TEST(Matrices, ArithmeticAndTransposeWorkOnAllElementsAndNothingIsInverted)
{
    // compared as text, which shows every element
    EXPECT_EQ(three.transpose().toString(), Matrix3(1, 4, 7, 2, 5, 8, 3, 6, 9).toString());
    EXPECT_EQ(Matrix4(four.m).transpose().toMat3().toString(),
              Matrix3(1, 5, 9, 2, 6, 10, 3, 7, 11).toString());
    EXPECT_EQ((3.0F * three - three + three).toString(), Matrix3(3, 6, 9, 12, 15, 18, 21, 24, 27).toString());
    EXPECT_EQ((four + four - 3.0F * four).toString(), (-1.0F * four).toString());
    EXPECT_EQ((-1.0F * four).m[15], -16.0F);
    EXPECT_EQ(three.invers().toString(), Matrix3().toString());
}

// Both directions: quaternion to matrix agrees with rotate(), and matrix to quaternion is its inverse
// whichever component dominates.
TEST(Matrices, RotationsComeBackAsTheirQuaternions)
{
    for (const Quaternion& q : {Quaternion(0.8F, 0.36F, -0.48F, 0), Quaternion(0.1F, 0.9F, 0.3F, 0.3F),
                                Quaternion(0.1F, -0.3F, 0.9F, 0.3F), Quaternion(0.1F, 0.3F, 0.3F, -0.9F)}) {
        const Matrix3 matrix = q.toRotationMatrix();
        expectNear(matrix * Vector3(1, 2, 3), q.rotate({1, 2, 3}));
        Quaternion back;
        Matrix4(matrix).CalcRotation(&back);
        expectNear(back.dotProduct(q) < 0 ? -back : back, q);
    }
}
