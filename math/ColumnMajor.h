#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

/// Shared by Matrix3 and Matrix4: arithmetic and text of N x N floats stored column by column.
namespace columnMajor {

template <std::size_t N>
void multiply(const float* a, const float* b, float* result)
{
    for (std::size_t c = 0; c < N; ++c) {
        for (std::size_t r = 0; r < N; ++r) {
            float sum = 0.0F;
            for (std::size_t k = 0; k < N; ++k) {
                sum += a[N * k + r] * b[N * c + k];
            }
            result[N * c + r] = sum;
        }
    }
}

template <std::size_t N>
void transpose(const float* a, float* result)
{
    for (std::size_t c = 0; c < N; ++c) {
        for (std::size_t r = 0; r < N; ++r) {
            result[N * r + c] = a[N * c + r];
        }
    }
}

/// result[i] = operation(i) for all N x N elements.
template <std::size_t N, class Operation>
void forEach(float* result, Operation operation)
{
    for (std::size_t i = 0; i < N * N; ++i) {
        result[i] = operation(i);
    }
}

/// One line a row, "| %f | %f ... |", without a final line end.
template <std::size_t N>
std::string toString(const float* a)
{
    std::string text;
    for (std::size_t r = 0; r < N; ++r) {
        text += r == 0 ? "|" : "\n|";
        for (std::size_t c = 0; c < N; ++c) {
            char element[64];  // "%f" of the largest float takes 47 characters
            std::snprintf(element, sizeof element, " %f |", static_cast<double>(a[N * c + r]));
            text += element;
        }
    }
    return text;
}

}  // namespace columnMajor
