#pragma once

#include "math/Matrix3.h"
#include "math/Vector3.h"

#include <cmath>
#include <string>

/// An orientation or a rotation: four single-precision floats, the scalar part w first.
///
/// Products are Hamilton's (Hamilton, "On Quaternions", 1844), so p * q turns by q first and by p after it.
/// Only the operations that say so normalise. Nothing is checked and nothing throws.
class Quaternion
{
public:
    float w = 1.0F;
    float x = 0.0F;
    float y = 0.0F;
    float z = 0.0F;

    /// The identity.
    Quaternion() = default;
    Quaternion(float w_, float x_, float y_, float z_) : w(w_), x(x_), y(y_), z(z_) {}
    Quaternion(float w_, const Vector3& v) : w(w_), x(v.x), y(v.y), z(v.z) {}
    /// The shortest-arc rotation that turns direction a into direction b. Neither needs unit length.
    Quaternion(const Vector3& a, const Vector3& b);

    Quaternion operator+(Quaternion q) const { return {w + q.w, x + q.x, y + q.y, z + q.z}; }
    Quaternion operator-(Quaternion q) const { return {w - q.w, x - q.x, y - q.y, z - q.z}; }
    Quaternion operator-() const { return {-w, -x, -y, -z}; }
    Quaternion operator*(float const& factor) const
    {
        return {w * factor, x * factor, y * factor, z * factor};
    }
    Quaternion operator*(Quaternion q) const;
    /// The product (0, v) * this: the vector becomes the left factor, against the written order.
    Quaternion operator*(Vector3 v) const;
    /// The vector part plus v; w is ignored.
    Vector3 operator+(Vector3 v) const { return vectorPart() + v; }
    /// The conjugate.
    Quaternion operator~() const { return {w, -x, -y, -z}; }
    /// The conjugate as well, despite the name: only the vector part changes sign.
    Quaternion negation() const { return ~*this; }

    bool operator==(Quaternion q) const { return w == q.w && x == q.x && y == q.y && z == q.z; }
    bool operator!=(Quaternion q) const { return !(*this == q); }

    float lengthSquared() const { return dotProduct(*this); }
    float length() const { return std::sqrt(lengthSquared()); }
    float dotProduct(Quaternion q) const { return w * q.w + x * q.x + y * q.y + z * q.z; }
    static float dotProduct(Quaternion a, Quaternion b) { return a.dotProduct(b); }

    /// Scales to length 1 in place. A quaternion of length 1e-8 or less stays unchanged.
    void normalise();

    /// v turned by this quaternion, which must have unit length.
    Vector3 rotate(Vector3 v) const;

    /// This unit quaternion to the power n; the identity where |w| is 0.9999 or more.
    Quaternion exponentiation(int n) const;

    /// angle in radians. The axis is not normalised first.
    static Quaternion FromAxisAngle(float angle, Vector3 const& axis);

    /// Angles in degrees about x, y and z: the product qX(a) qY(b) qZ(c), normalised.
    static Quaternion FromEuler(float a, float b, float c);

    /// Spherical linear interpolation along the shorter arc, from q1 at t = 0 to q2 at t = 1. t is not
    /// clamped and the result is not normalised. Shoemake, "Animating Rotation with Quaternion Curves", 1985.
    static Quaternion Slerp(Quaternion const& q1, Quaternion const& q2, float const& t);

    Matrix3 toRotationMatrix() const;

    /// 0 if 1 - x*x - y*y - z*z is less than 1, else -1. The comparison is with 1 on purpose, not with 0.
    float computeW() const;

    /// "(w, x, y, z)" with six decimals.
    std::string toString() const;
    /// Writes toString() to standard output, without a line end.
    void print() const;

private:
    Vector3 vectorPart() const { return {x, y, z}; }
};

inline Quaternion operator*(float const& factor, Quaternion const& q)
{
    return q * factor;
}
/// The product q * (0, v): the vector becomes the right factor, against the written order.
Quaternion operator*(Vector3 v, Quaternion q);

inline Quaternion Quaternion::operator*(Quaternion q) const
{
    return {w * q.w - x * q.x - y * q.y - z * q.z, w * q.x + x * q.w + y * q.z - z * q.y,
            w * q.y + y * q.w + z * q.x - x * q.z, w * q.z + z * q.w + x * q.y - y * q.x};
}
