#pragma once

#include <cstdint>
#include <random>

namespace practice {

/// The only source of chance in a match.
///
/// The language standard fixes the engine's sequence, but not the library's distributions. So we map to
/// floats ourselves, and a seed gives the same match everywhere.
class Random
{
public:
    explicit Random(std::uint32_t seed) : engine(seed) {}

    /// Uniform over all 32-bit numbers.
    std::uint32_t next() { return static_cast<std::uint32_t>(engine()); }

    /// Uniform in [0, 1).
    float unit() { return static_cast<float>(next() >> 8U) * (1.0F / 16777216.0F); }

    /// Uniform in [low, high).
    float between(float low, float high) { return low + (high - low) * unit(); }

private:
    std::mt19937 engine;
};

}  // namespace practice
