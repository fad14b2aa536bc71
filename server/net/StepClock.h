#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace practice {

/// Says when the steps of a match are due, and remembers how well that was kept.
///
/// A step that comes late is followed by the next ones at once until the time is caught up; a server that was
/// held up for longer than `mostBehind` gives the time up instead of racing through it.
class StepClock
{
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    using Duration = std::chrono::nanoseconds;

    static constexpr Duration mostBehind = std::chrono::milliseconds(100);

    explicit StepClock(Duration period_) : period(period_) {}

    /// The first step is due a period after this.
    void start(TimePoint now) { next = now + period; }

    TimePoint nextStep() const { return next; }

    /// True where a step is to be made now; the following one is due a period later.
    bool takeStep(TimePoint now);

    /// For the operator: "played N steps, latest X ms behind", and what was given up, if anything was.
    std::string report() const;

private:
    Duration period;
    TimePoint next;
    Duration latest{0};
    std::uint64_t taken = 0;
    Duration givenUp{0};
};

}  // namespace practice
