#pragma once

#include "relay/Impairment.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>

namespace relay {

/// The datagrams under way in one direction of one flow.
///
/// Jitter alone changes no order, as on a single path: one that is delayed less waits for those before it. So
/// the share that `reorder` asks for, and no more, arrives behind a later one: it is held back until later
/// ones have left, or for holdLimit where too few come. A copy follows its original.
/// Knows no clock: the caller says what time it is, and never goes back.
class DelayQueue
{
public:
    static constexpr Duration holdLimit = std::chrono::milliseconds(250);
    /// Counts what each datagram costs besides its bytes, which may be none: a full match at a delay of 10 s.
    static constexpr std::size_t byteLimit = std::size_t(2) << 20U;

    explicit DelayQueue(const Impairment& impairment_) : impairment(impairment_) {}

    /// False, and the datagram is lost, where too much is under way already.
    bool push(Time now, std::string datagram);
    /// The next one that has arrived by now.
    std::optional<std::string> pop(Time now);
    /// When to call pop again; nothing where nothing is under way.
    std::optional<Time> nextDue() const;

private:
    struct Waiting
    {
        Time due;
        std::uint64_t number;
        unsigned copies;
        unsigned overtakenBy;
        std::string bytes;

        std::size_t cost() const { return sizeof(Waiting) + bytes.size(); }
    };

    Impairment impairment;
    std::deque<Waiting> ordered;  ///< by due
    std::deque<Waiting> held;     ///< to be overtaken; by due, from which holdLimit counts
    std::uint64_t pushed = 0;
    std::size_t waitingBytes = 0;  ///< the sum of their costs
    Time lastDue;

    void releaseOverdue(Time now);
    void releaseOvertaken(const Waiting& by);
};

}  // namespace relay
