#pragma once

#include "server/net/RateLimit.h"

#include <cstdint>
#include <functional>
#include <string>
#include <utility>

namespace practice {

/// Keeps clients that come and go from flooding a log: of many lines it passes on some, and once a second
/// says how many it left out. Counts time in steps of a match, from 0.
class RateLimitedLog
{
public:
    using Log = std::function<void(const std::string& line)>;

    explicit RateLimitedLog(Log log_) : log(std::move(log_)) {}

    void say(const std::string& line, std::uint64_t step);
    /// Tells what was left out, if anything was and it has not been told within the last second.
    void afterStep(std::uint64_t step);
    /// Tells it now.
    void tellLeftOut();

private:
    Log log;
    RateLimit lines{10, 80, 0};  // all of a full server may leave, or join, at once
    std::uint64_t leftOut = 0;
    std::uint64_t toldAt = 0;  ///< step
};

}  // namespace practice
