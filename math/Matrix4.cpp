#include "math/Matrix4.h"

#include "Common/DebugPrint.h"
#include "math/ColumnMajor.h"
#include "math/Quaternion.h"

#include <algorithm>

Matrix4::Matrix4(const float* elements)
{
    std::copy_n(elements, 16, m);
}

Matrix4 Matrix4::operator*(const Matrix4& o) const
{
    Matrix4 result;
    columnMajor::multiply<4>(m, o.m, result.m);
    return result;
}

Matrix4 Matrix4::operator*(float factor) const
{
    Matrix4 result;
    columnMajor::forEach<4>(result.m, [&](auto i) { return m[i] * factor; });
    return result;
}

Matrix4 Matrix4::operator+(const Matrix4& o) const
{
    Matrix4 result;
    columnMajor::forEach<4>(result.m, [&](auto i) { return m[i] + o.m[i]; });
    return result;
}

Matrix4 Matrix4::operator-(const Matrix4& o) const
{
    Matrix4 result;
    columnMajor::forEach<4>(result.m, [&](auto i) { return m[i] - o.m[i]; });
    return result;
}

Vector3 Matrix4::operator*(Vector3 v) const
{
    return toMat3() * v + Vector3(m[12], m[13], m[14]);
}

Matrix4 Matrix4::transpose() const
{
    Matrix4 result;
    columnMajor::transpose<4>(m, result.m);
    return result;
}

Matrix3 Matrix4::toMat3() const
{
    return {m[0], m[1], m[2], m[4], m[5], m[6], m[8], m[9], m[10]};
}

void Matrix4::CalcRotation(Quaternion* out) const
{
    toMat3().CalcRotation(out);
}

std::string Matrix4::toString() const
{
    return columnMajor::toString<4>(m);
}

void Matrix4::print() const
{
    DebugPrint("%s\n", toString().c_str());
}
