#pragma once

#include "math/Matrix3.h"
#include "math/Vector3.h"

#include <string>

class Quaternion;

/// A 4x4 transformation matrix of floats, stored column by column: row r, column c at index 4c + r.
///
/// glMultMatrixf takes the elements in this order. A translation stands at indices 12, 13 and 14.
class Matrix4
{
public:
    float m[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

    /// The identity.
    Matrix4() = default;
    /// Copies sixteen floats, column by column.
    Matrix4(const float* elements);
    /// Sixteen elements, column by column.
    Matrix4(float m0, float m1, float m2, float m3, float m4, float m5, float m6, float m7, float m8,
            float m9, float m10, float m11, float m12, float m13, float m14, float m15)
        : m{m0, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15}
    {
    }
    /// The linear map r without a translation.
    Matrix4(Matrix3 r)
        : m{r.m[0], r.m[1], r.m[2], 0, r.m[3], r.m[4], r.m[5], 0, r.m[6], r.m[7], r.m[8], 0, 0, 0, 0, 1}
    {
    }

    Matrix4 operator*(const Matrix4& o) const;
    Matrix4 operator*(float factor) const;
    Matrix4 operator+(const Matrix4& o) const;
    Matrix4 operator-(const Matrix4& o) const;
    /// The point v moved by the matrix. The fourth row is ignored: there is no division by w.
    Vector3 operator*(Vector3 v) const;
    Matrix4 transpose() const;

    /// The upper-left 3x3.
    Matrix3 toMat3() const;
    /// Matrix3::CalcRotation of toMat3().
    void CalcRotation(Quaternion* out) const;

    /// The rows as text, "| a | b | c | d |" each, separated by line ends.
    std::string toString() const;
    /// Writes toString() and a line end to standard output.
    void print() const;
};

inline Matrix4 operator*(float factor, const Matrix4& matrix)
{
    return matrix * factor;
}
