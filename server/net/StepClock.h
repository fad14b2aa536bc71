#pragma once

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>

namespace practice {

/// Tells when the steps of a match are due, and measures how late they come.
///
/// After a delay the missed steps follow at once until the time is caught up. After a delay of more than
/// `longestCatchUp` the missed time is given up instead.
class StepClock
{
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    using Duration = std::chrono::nanoseconds;

    static constexpr Duration longestCatchUp = std::chrono::milliseconds(100);

    explicit StepClock(Duration period_) : period(period_) {}

    /// The first step is due one period after `now`.
    void start(TimePoint now) { next = now + period; }

    TimePoint nextStep() const { return next; }

    /// Returns true if a step is due; the following one is due one period later.
    bool takeStep(TimePoint now)
    {
        const Duration behind = now - next;
        if (behind < Duration::zero()) {
            return false;
        }
        latest = std::max(latest, behind);
        latestSinceAsked = std::max(latestSinceAsked, behind);
        if (behind > longestCatchUp) {
            givenUp += behind;
            next = now;
        }
        next += period;
        ++taken;
        return true;
    }

    /// Of the steps since the last call.
    Duration takeLatestDelay() { return std::exchange(latestSinceAsked, Duration::zero()); }

    /// "played N steps, latest X ms behind", and the time given up, if any.
    std::string report() const
    {
        const std::string played =
            "played " + std::to_string(taken) + " steps, latest " + milliseconds(latest) + " behind";
        return givenUp == Duration::zero() ? played : played + ", " + milliseconds(givenUp) + " given up";
    }

private:
    Duration period;
    TimePoint next;
    Duration latest{0};
    Duration latestSinceAsked{0};
    std::uint64_t taken = 0;
    Duration givenUp{0};

    static std::string milliseconds(Duration time)
    {
        std::array<char, 32> text{};
        std::snprintf(text.data(), text.size(), "%.1f ms",
                      std::chrono::duration<double, std::milli>(time).count());
        return text.data();
    }
};

}  // namespace practice
