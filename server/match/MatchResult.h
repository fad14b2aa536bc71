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
    bool complete;    ///< it has reached one of its limits
    unsigned seconds;
    int redScore;
    int blueScore;
    std::vector<Standing> standings;  ///< all ships, and the latest that left; most kills first
};

/// The table of a finished match: a headline and one line for each player.
std::vector<std::string> scoreTable(const MatchResult& result);

}  // namespace practice
