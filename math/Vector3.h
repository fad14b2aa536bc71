#pragma once

#include <cmath>
#include <string>

/// A point, a direction or a velocity in three dimensions: three single-precision floats, copied by value.
///
/// Nothing is checked and nothing throws; NaN and infinity propagate as in IEEE 754. Mind the operators:
/// vector * vector is the dot product, and < and > compare all three components at once.
class Vector3
{
public:
    float x = 0.0F;
    float y = 0.0F;
    float z = 0.0F;

    Vector3() = default;
    constexpr Vector3(float x_, float y_, float z_) : x(x_), y(y_), z(z_) {}

    Vector3 operator+(Vector3 o) const { return {x + o.x, y + o.y, z + o.z}; }
    Vector3 operator-(Vector3 o) const { return {x - o.x, y - o.y, z - o.z}; }
    Vector3 operator-() const { return {-x, -y, -z}; }
    /// The dot product.
    float operator*(Vector3 o) const { return dotProduct(o); }
    Vector3 operator*(float factor) const { return {x * factor, y * factor, z * factor}; }

    Vector3& operator+=(Vector3 o) { return *this = *this + o; }
    Vector3& operator-=(Vector3 o) { return *this = *this - o; }
    Vector3& operator*=(float factor) { return *this = *this * factor; }

    bool operator==(Vector3 o) const { return x == o.x && y == o.y && z == o.z; }
    /// True only if every component is strictly smaller than o's: a partial order, unfit for sorting.
    bool operator<(Vector3 o) const { return o.x > x && o.y > y && o.z > z; }
    /// True only if every component is strictly greater than o's.
    bool operator>(Vector3 o) const { return x > o.x && y > o.y && z > o.z; }

    /// Component 0 (x), 1 (y) or 2 (z); any other index prints an error line and yields 0.
    float operator[](unsigned int i) const;

    float lengthSquared() const { return dotProduct(*this); }
    float length() const { return std::sqrt(lengthSquared()); }
    float distanceSquared(Vector3 o) const { return (*this - o).lengthSquared(); }
    float distance(Vector3 o) const { return (*this - o).length(); }
    float dotProduct(Vector3 o) const { return x * o.x + y * o.y + z * o.z; }
    /// this x o, right-handed.
    Vector3 crossProduct(Vector3 o) const
    {
        return {y * o.z - o.y * z, z * o.x - o.z * x, x * o.y - o.x * y};
    }

    /// The point a + t (b - a); t is not clamped.
    static Vector3 lerp(Vector3 a, Vector3 b, float t) { return (b - a) * t + a; }

    /// Scales to length 1 in place. A vector of length 1e-8 or less stays unchanged.
    void normalise();

    /// "(x,y,z)" with six decimals.
    std::string toString() const;
    /// Writes toString() to standard output, without a line end.
    void print() const;
};

inline Vector3 operator*(float factor, Vector3 v)
{
    return v * factor;
}

/// The unit normal (a - b) x (a - c) of the triangle a, b, c.
Vector3 ComputeNormal(Vector3 a, Vector3 b, Vector3 c);
