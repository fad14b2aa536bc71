#include "server/net/RateLimitedLog.h"

#include "server/match/Match.h"

#include <utility>

namespace practice {

void RateLimitedLog::say(const std::string& line, std::uint64_t step)
{
    if (lines.spend(1, step)) {
        log(line);
    } else {
        ++leftOut;
    }
}

void RateLimitedLog::afterStep(std::uint64_t step)
{
    if (leftOut != 0 && step >= toldAt + Match::stepsPerSecond) {
        toldAt = step;
        tellLeftOut();
    }
}

void RateLimitedLog::tellLeftOut()
{
    if (const std::uint64_t count = std::exchange(leftOut, 0); count != 0) {
        log("... and " + std::to_string(count) + " more lines like these");
    }
}

}  // namespace practice
