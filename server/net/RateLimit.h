#pragma once

#include <cstdint>

namespace practice {

/// Allows so many units a second on average, and `burst` of them at once. Counts time in steps of a match.
class RateLimit
{
public:
    /// `step`: the present one. Starts with the whole burst allowed.
    RateLimit(std::uint32_t perSecond, std::uint32_t burst, std::uint64_t step);

    /// False where that is more than is allowed now; nothing is spent then.
    bool spend(std::uint64_t units, std::uint64_t step);

private:
    std::uint64_t perSecond;
    std::uint64_t most;      ///< in shares of a unit, as many a unit as a second has steps
    std::uint64_t left;      ///< likewise
    std::uint64_t filledAt;  ///< step
};

}  // namespace practice
