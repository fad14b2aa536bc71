#include "math/Matrix4.h"

#include "math/Quaternion.h"
#include "tests/math/Near.h"

#include <vector>

namespace {

using Elements = std::vector<float>;

template <class Matrix>
Elements elements(const Matrix& matrix)
{
    return {std::begin(matrix.m), std::end(matrix.m)};
}

const Matrix3 three(1, 2, 3, 4, 5, 6, 7, 8, 9);
const Matrix4 four(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16);

}  // namespace

TEST(Matrices, AreFilledColumnByColumnShownRowByRowAndOnlyTheLargerPrintsALineEnd)
{
    EXPECT_EQ(three.toString(),
              "| 1.000000 | 4.000000 | 7.000000 |\n| 2.000000 | 5.000000 | 8.000000 |\n"
              "| 3.000000 | 6.000000 | 9.000000 |");
    testing::internal::CaptureStdout();
    Matrix3(three.m).print();
    Matrix4(four.m).print();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), three.toString() + four.toString() + "\n");
    EXPECT_EQ(elements(Matrix4(three)), (Elements{1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0, 0, 0, 0, 1}));
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
    EXPECT_EQ(elements(three.transpose()), (Elements{1, 4, 7, 2, 5, 8, 3, 6, 9}));
    EXPECT_EQ(elements(four.transpose().toMat3()), (Elements{1, 5, 9, 2, 6, 10, 3, 7, 11}));
    EXPECT_EQ(elements(3.0F * three - three + three), (Elements{3, 6, 9, 12, 15, 18, 21, 24, 27}));
    EXPECT_EQ(elements(3.0F * four - four + four), elements(four * 3.0F));
    EXPECT_EQ((four * 3.0F).m[15], 48.0F);
    EXPECT_EQ(elements(three.invers()), elements(Matrix3()));
}

// Both directions: quaternion to matrix agrees with rotate(), and matrix to quaternion is its inverse
// whichever component dominates.
TEST(Matrices, RotationsComeBackAsTheirQuaternions)
{
    for (const Quaternion& any : {Quaternion(0.8F, 0.36F, -0.48F, 0), Quaternion(0.1F, 0.9F, 0.3F, 0.3F),
                                  Quaternion(0.1F, -0.3F, 0.9F, 0.3F), Quaternion(0.1F, 0.3F, 0.3F, -0.9F),
                                  Quaternion(0, 1, 0, 0), Quaternion(0, 0, 1, 0), Quaternion(0, 0, 0, 1)}) {
        const Quaternion q = normalised(any);
        const Matrix3 matrix = q.toRotationMatrix();
        expectNear(matrix * Vector3(1, 2, 3), q.rotate({1, 2, 3}));
        Quaternion back;
        Matrix4(matrix).CalcRotation(&back);
        expectNear(back.dotProduct(q) < 0 ? -back : back, q);
    }
}
