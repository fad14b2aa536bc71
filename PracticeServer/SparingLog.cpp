#include "PracticeServer/SparingLog.h"

#include "PracticeServer/Match.h"

#include <utility>

namespace practice {

void SparingLog::say(const std::string& line, std::uint64_t step)
{
    if (lines.spend(1, step)) {
        log(line);
    } else {
        ++leftOut;
    }
}

void SparingLog::afterStep(std::uint64_t step)
{
    if (leftOut != 0 && step >= toldAt + Match::stepsPerSecond) {
        toldAt = step;
        tellLeftOut();
    }
}

void SparingLog::tellLeftOut()
{
    if (const std::uint64_t count = std::exchange(leftOut, 0); count != 0) {
        log("... and " + std::to_string(count) + " more lines like these");
    }
}

}  // namespace practice
