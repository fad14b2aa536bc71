#include "server/net/RateLimit.h"

#include "server/match/Match.h"

#include <algorithm>

namespace practice {

namespace {

constexpr std::uint64_t stepsPerSecond = Match::stepsPerSecond;

}  // namespace

RateLimit::RateLimit(std::uint32_t perSecond_, std::uint32_t burst, std::uint64_t step)
    : perSecond(perSecond_), most(burst * stepsPerSecond), left(most), filledAt(step)
{
}

bool RateLimit::spend(std::uint64_t units, std::uint64_t step)
{
    left = std::min(most, left + (step - filledAt) * perSecond);
    filledAt = step;
    const std::uint64_t price = units * stepsPerSecond;
    if (price > left) {
        return false;
    }
    left -= price;
    return true;
}

}  // namespace practice
