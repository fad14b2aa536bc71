#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <random>
#include <string>

namespace relay {

using Clock = std::chrono::steady_clock;
using Time = Clock::time_point;
using Duration = std::chrono::microseconds;

/// How bad a network is. A perfect one by default.
struct Conditions
{
    double latency = 0;    ///< ms, one way
    double jitter = 0;     ///< ms; each delay is uniform in latency ± jitter, and never below 0
    double loss = 0;       ///< percent of the datagrams that never arrive
    double duplicate = 0;  ///< percent of the arriving datagrams that arrive twice
    double reorder = 0;    ///< percent of the arriving datagrams that a later one overtakes; to mostReorder
};

constexpr double mostReorder = 50;  ///< percent: each late datagram needs a punctual one that overtakes it

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

/// One direction of one connection. Each has its own faults: the traffic of others does not shift them.
struct Flow
{
    Transport transport;
    std::uint32_t number;  ///< of the connection, or of the client's flow of datagrams; from 1
    Direction direction;
};

/// Decides what the network does to the first, second, third... piece of a flow.
///
/// No clock and no sockets. The conditions, the seed, the flow and n alone determine the n-th decision, on
/// every machine. A stream is delayed only: all its pieces arrive once and in order.
class Impairment
{
public:
    struct Decision
    {
        unsigned copies;       ///< 0: lost
        Duration delay;        ///< at least
        unsigned overtakenBy;  ///< number of later datagrams that leave before this one
    };

    Impairment(const Conditions& conditions, std::uint32_t seed, const Flow& flow);

    Decision next();

private:
    Conditions conditions;
    std::mt19937 engine;
    bool lastWasHeld = false;  ///< the newest piece that is not lost; the next one must overtake it

    double unit();
};

/// The datagrams, or pieces of a stream, under way in one direction.
///
/// Jitter alone never changes the order, as on a single path: a datagram waits for those before it. Only the
/// share in `reorder` arrives late: a held datagram waits for later ones to leave, at most for holdLimit. A
/// copy follows its original. Knows no clock: the caller passes the time, which never goes back.
class DelayQueue
{
public:
    static constexpr Duration holdLimit = std::chrono::milliseconds(250);
    /// Includes the overhead of each datagram. Enough for a full match at a delay of 10 s.
    static constexpr std::size_t byteLimit = std::size_t(2) << 20U;

    explicit DelayQueue(const Impairment& impairment_) : impairment(impairment_) {}

    /// False where the queue is full: the datagram is lost.
    bool push(Time now, std::string datagram);
    /// The next datagram that has arrived by now.
    std::optional<std::string> pop(Time now);
    /// When to call pop again, perhaps at once; Time::max() where the queue is empty.
    Time nextDue() const;
    /// In bytes, with the overhead of each datagram.
    std::size_t size() const { return waitingBytes; }

private:
    struct Waiting
    {
        Time due;
        unsigned copies;
        unsigned overtakenBy;  ///< number of later ones that leave first
        std::string bytes;

        std::size_t cost() const { return sizeof(Waiting) + bytes.size(); }
    };

    Impairment impairment;
    std::deque<Waiting> waiting;   ///< in the order of their coming
    std::size_t waitingBytes = 0;  ///< the sum of their costs

    std::size_t next() const;
};

}  // namespace relay
