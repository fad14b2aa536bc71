#include "relay/Impairment.h"

#include <algorithm>

namespace relay {

namespace {

constexpr unsigned deepestReorder = 3;  ///< datagrams; what parallel paths of one route do

std::mt19937 generator(std::uint32_t seed, const Flow& flow)
{
    std::seed_seq sequence{seed, static_cast<std::uint32_t>(flow.transport), flow.number,
                           static_cast<std::uint32_t>(flow.direction)};
    return std::mt19937(sequence);
}

}  // namespace

Impairment::Impairment(const Conditions& conditions_, std::uint32_t seed, const Flow& flow)
    : conditions(conditions_), engine(generator(seed, flow))
{
}

// Every decision takes the same number of draws, so that losses and copies stay where they are when another
// rate changes. Only a datagram behind a punctual one is drawn for a reordering: with the chance h, which
// makes the share h / (1 + h) of all.
Fate Impairment::next()
{
    const bool lost = unit() < conditions.loss;
    const bool doubled = unit() < conditions.duplicate;
    const bool drawn = unit() < conditions.reorder / (1 - conditions.reorder);
    const auto depth = 1 + static_cast<unsigned>(unit() * deepestReorder);
    const double swing = 2 * unit() - 1;
    const auto jitter = static_cast<Duration::rep>(swing * static_cast<double>(conditions.jitter.count()));
    const unsigned copies = doubled ? 2 : 1;
    const bool held = drawn && !overtakes;
    overtakes = lost ? overtakes : held;
    return {lost ? 0 : copies, std::max(Duration(0), conditions.latency + Duration(jitter)),
            held ? depth : 0};
}

/// Uniform in [0, 1). The engine's sequence is fixed by the language standard, the library's distributions
/// are not.
double Impairment::unit()
{
    return static_cast<double>(engine()) * (1.0 / 4294967296.0);
}

}  // namespace relay
