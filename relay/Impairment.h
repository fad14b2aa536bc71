#pragma once

#include <chrono>
#include <cstdint>
#include <random>

namespace relay {

using Clock = std::chrono::steady_clock;
using Time = Clock::time_point;
using Duration = std::chrono::microseconds;

/// How bad a network is. A perfect one by default.
struct Conditions
{
    Duration latency{0};   ///< one way
    Duration jitter{0};    ///< each delay is uniform in latency ± jitter, and never below 0
    double loss = 0;       ///< share of the datagrams that never arrive, 0 to 1
    double duplicate = 0;  ///< share of those that arrive that arrive twice, 0 to 1
    /// Share of those that arrive that arrive behind a later one, 0 to mostReorder.
    double reorder = 0;
};

/// More than every other one cannot be late for sure: each needs a punctual one that overtakes it.
constexpr double mostReorder = 0.5;

enum class Transport : std::uint8_t
{
    stream,
    datagrams
};

enum class Direction : std::uint8_t
{
    toServer,
    toClient
};

/// One direction of one connection: each has faults of its own, which the others' traffic does not shift.
struct Flow
{
    Transport transport;
    std::uint32_t number;  ///< of the connection, or of the client's flow of datagrams; from 1
    Direction direction;
};

/// What becomes of one datagram.
struct Fate
{
    unsigned copies;       ///< 0: lost
    Duration delay;        ///< at least
    unsigned overtakenBy;  ///< so many later ones leave before it
};

/// Decides what the network does to the first, second, third... piece that is sent along a flow.
///
/// No clock and no sockets: the n-th decision follows from the conditions, the seed, the flow and n alone, on
/// every machine.
class Impairment
{
public:
    Impairment(const Conditions& conditions, std::uint32_t seed, const Flow& flow);

    Fate next();

private:
    Conditions conditions;
    std::mt19937 engine;
    bool overtakes = false;  ///< the next one that arrives must not be held: the one before it is

    double unit();
};

}  // namespace relay
