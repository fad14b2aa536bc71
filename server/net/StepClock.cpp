#include "server/net/StepClock.h"

#include <algorithm>
#include <iomanip>
#include <sstream>

namespace practice {

namespace {

double milliseconds(StepClock::Duration time)
{
    return std::chrono::duration<double, std::milli>(time).count();
}

}  // namespace

bool StepClock::takeStep(TimePoint now)
{
    const Duration behind = now - next;
    if (behind < Duration::zero()) {
        return false;
    }
    latest = std::max(latest, behind);
    if (behind > mostBehind) {
        givenUp += behind;
        next = now;
    }
    next += period;
    ++taken;
    return true;
}

std::string StepClock::report() const
{
    std::ostringstream text;
    text << std::fixed << std::setprecision(1) << "played " << taken << " steps, latest "
         << milliseconds(latest) << " ms behind";
    if (givenUp > Duration::zero()) {
        text << ", " << milliseconds(givenUp) << " ms given up";
    }
    return text.str();
}

}  // namespace practice
