#include "math/Vector3.h"

#include "Common/DebugPrint.h"

#include <cstdio>

float Vector3::operator[](unsigned int i) const
{
    switch (i) {
        case 0:
            return x;
        case 1:
            return y;
        case 2:
            return z;
        default:
            DebugPrint("Index out of bounds (Vector3)\n");
            return 0.0F;
    }
}

void Vector3::normalise()
{
    const float l = length();
    if (static_cast<double>(l) > 1e-8) {
        *this *= 1.0F / l;
    }
}

std::string Vector3::toString() const
{
    char text[160];  // "%f" of the largest float takes 47 characters
    std::snprintf(text, sizeof text, "(%f,%f,%f)", static_cast<double>(x), static_cast<double>(y),
                  static_cast<double>(z));
    return text;
}

void Vector3::print() const
{
    DebugPrint("%s", toString().c_str());
}

Vector3 ComputeNormal(Vector3 a, Vector3 b, Vector3 c)
{
    Vector3 normal = (a - b).crossProduct(a - c);
    normal.normalise();
    return normal;
}
