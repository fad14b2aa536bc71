#include "server/match/MatchResult.h"

#include <cstdio>

namespace practice {

namespace {

const char* verdict(const MatchResult& result)
{
    if (!result.complete) {
        return "stopped";
    }
    if (result.blueScore == result.redScore) {
        return "a draw";
    }
    return result.blueScore > result.redScore ? "blue wins" : "red wins";
}

}  // namespace

std::vector<std::string> scoreTable(const MatchResult& result)
{
    char line[128];  // every column is bounded, and names are the match's own
    std::snprintf(line, sizeof line, "match %u over after %u:%02u: %s, blue %d red %d", result.number,
                  result.seconds / 60, result.seconds % 60, verdict(result), result.blueScore,
                  result.redScore);
    std::vector<std::string> lines{line};
    for (const MatchResult::Standing& standing : result.standings) {
        std::snprintf(line, sizeof line, "  %-5s%-16s%4d kills%5d deaths",
                      standing.team == Team::blue ? "blue" : "red", standing.name.c_str(), standing.kills,
                      standing.deaths);
        lines.emplace_back(line);
    }
    return lines;
}

}  // namespace practice
