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
    double corrupt = 0;    ///< percent of the kilobytes, of either transport, with a wrong byte
    double bandwidth = 0;  ///< kB (1,000 bytes) a second of each flow; 0: no limit
    double pieces = 0;     ///< bytes; a stream is cut into pieces of 1 to so many; 0: not cut
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

/// Random places in the bytes of a flow. Seed and flow alone determine them, on every machine.
class RandomPlaces
{
public:
    /// The distance from one place to the next is 1 to `longest` bytes. 0: there are none.
    RandomPlaces(double longest_, std::uint32_t seed) : longest(longest_), engine(seed) { draw(); }

    /// Bytes from here to the next place.
    std::size_t distance() const { return ahead; }
    /// Moves on. `bytes` is at most distance(). At the place itself the next one is drawn.
    void advance(std::size_t bytes);

private:
    double longest;
    std::mt19937 engine;
    std::size_t ahead = 0;

    void draw();
};

/// Decides what the network does to the first, second, third... piece of a flow.
///
/// No clock and no sockets. The conditions, the seed, the flow and n alone determine the n-th decision, on
/// every machine. All pieces of a stream arrive once and in order; a stream is delayed, cut and corrupted.
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
    /// Changes single bytes of what the flow carries next.
    void corrupt(std::string& bytes);
    /// The size of the next piece, where `bytes` are left. A datagram stays whole.
    std::size_t cut(std::size_t bytes);
    /// For how long these bytes occupy the line.
    Duration sendingTime(std::size_t bytes) const;
    /// Whether the line loses what would have to wait for so long. A stream waits.
    bool losesAfter(Clock::duration wait) const;

private:
    Transport transport;
    Conditions conditions;
    std::mt19937 engine;
    RandomPlaces wrongBytes, cuts;
    bool lastWasHeld = false;  ///< the newest piece that is not lost; the next one must overtake it
};

/// The datagrams, or pieces of a stream, under way in one direction.
///
/// Jitter alone never changes the order, as on a single path: a datagram waits for those before it. Only the
/// share in `reorder` arrives late: a held datagram waits for later ones to leave, at most for holdLimit. A
/// copy follows its original. With a limited bandwidth the line carries one piece after the other. Knows no
/// clock: the caller passes the time, which never goes back.
class DelayQueue
{
public:
    static constexpr Duration holdLimit = std::chrono::milliseconds(250);
    /// Includes the overhead of each datagram. Enough for a full match at a delay of 10 s.
    static constexpr std::size_t byteLimit = std::size_t(2) << 20U;

    explicit DelayQueue(const Impairment& impairment_) : impairment(impairment_) {}

    /// Takes a datagram, or bytes of a stream. False where the queue is full: the datagram is lost.
    bool push(Time now, std::string bytes);
    /// The next datagram, or piece of a stream, that has arrived by now.
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
    Time lineFree;                 ///< when the line has sent all that came

    bool pushPiece(Time now, std::string piece);
    std::size_t next() const;
};

}  // namespace relay
