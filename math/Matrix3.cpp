#include "math/Matrix3.h"

#include "Common/DebugPrint.h"
#include "math/ColumnMajor.h"
#include "math/Quaternion.h"

#include <algorithm>
#include <cmath>

Matrix3::Matrix3(const float* elements)
{
    std::copy_n(elements, 9, m);
}

Matrix3 Matrix3::operator*(const Matrix3& o) const
{
    Matrix3 result;
    columnMajor::multiply<3>(m, o.m, result.m);
    return result;
}

Matrix3 Matrix3::operator*(float factor) const
{
    Matrix3 result;
    columnMajor::forEach<3>(result.m, [&](auto i) { return m[i] * factor; });
    return result;
}

Matrix3 Matrix3::operator+(const Matrix3& o) const
{
    Matrix3 result;
    columnMajor::forEach<3>(result.m, [&](auto i) { return m[i] + o.m[i]; });
    return result;
}

Matrix3 Matrix3::operator-(const Matrix3& o) const
{
    Matrix3 result;
    columnMajor::forEach<3>(result.m, [&](auto i) { return m[i] - o.m[i]; });
    return result;
}

Vector3 Matrix3::operator*(Vector3 v) const
{
    return {m[0] * v.x + m[3] * v.y + m[6] * v.z, m[1] * v.x + m[4] * v.y + m[7] * v.z,
            m[2] * v.x + m[5] * v.y + m[8] * v.z};
}

Matrix3 Matrix3::transpose() const
{
    Matrix3 result;
    columnMajor::transpose<3>(m, result.m);
    return result;
}

void Matrix3::CalcRotation(Quaternion* out) const
{
    const float trace = m[0] + m[4] + m[8];
    if (static_cast<double>(trace) > 0.0001) {
        const float s = 0.5F / std::sqrt(trace + 1.0F);
        *out = {0.25F / s, (m[5] - m[7]) * s, (m[6] - m[2]) * s, (m[1] - m[3]) * s};
    } else if (m[0] > m[4] && m[0] > m[8]) {
        const float s = 2.0F * std::sqrt(1.0F + m[0] - m[4] - m[8]);
        *out = {(m[5] - m[7]) / s, 0.25F * s, (m[3] + m[1]) / s, (m[6] + m[2]) / s};
    } else if (!(m[4] > m[8])) {
        const float s = 2.0F * std::sqrt(1.0F + m[8] - m[0] - m[4]);
        *out = {(m[1] - m[3]) / s, (m[6] + m[2]) / s, (m[7] + m[5]) / s, 0.25F * s};
    } else {
        const float s = 2.0F * std::sqrt(1.0F + m[4] - m[0] - m[8]);
        *out = {(m[6] - m[2]) / s, (m[3] + m[1]) / s, 0.25F * s, (m[7] + m[5]) / s};
    }
}

std::string Matrix3::toString() const
{
    return columnMajor::toString<3>(m);
}

void Matrix3::print() const
{
    DebugPrint("%s", toString().c_str());
}
