#pragma once

#include "server/match/Ship.h"

#include <cstdint>
#include <string>
#include <vector>

namespace practice {

/// How a match ended.
struct MatchResult
{
    struct Standing
    {
        std::string name;
        Team team;
        std::int32_t kills;
        std::int32_t deaths;
    };

    unsigned number;  ///< 1 for the first match
    unsigned seconds;
    int redScore;
    int blueScore;
    std::vector<Standing> standings;  ///< everyone who was there at the end, most kills first
};

}  // namespace practice
