#pragma once

#include "math/Vector3.h"

#include <string>

class Quaternion;

/// A 3x3 matrix of floats, stored column by column: row r, column c at index 3c + r.
class Matrix3
{
public:
    float m[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};

    /// The identity.
    Matrix3() = default;
    /// Copies nine floats, column by column.
    Matrix3(const float* elements);
    /// Nine elements, column by column.
    Matrix3(float m0, float m1, float m2, float m3, float m4, float m5, float m6, float m7, float m8)
        : m{m0, m1, m2, m3, m4, m5, m6, m7, m8}
    {
    }

    Matrix3 operator*(const Matrix3& o) const;
    Matrix3 operator*(float factor) const;
    Matrix3 operator+(const Matrix3& o) const;
    Matrix3 operator-(const Matrix3& o) const;
    Vector3 operator*(Vector3 v) const;
    Matrix3 transpose() const;

    /// Always the identity: no inverse is computed. Nothing in the client calls it.
    Matrix3 invers() const { return {}; }

    /// Writes the quaternion of this rotation matrix to *out, not normalised. The trace and the largest
    /// diagonal element choose the formula (Shepperd, "Quaternion from Rotation Matrix", 1978).
    void CalcRotation(Quaternion* out) const;

    /// The rows as text, "| a | b | c |" each, separated by line ends.
    std::string toString() const;
    /// Writes toString() to standard output, without a line end.
    void print() const;
};

inline Matrix3 operator*(float factor, const Matrix3& matrix)
{
    return matrix * factor;
}
