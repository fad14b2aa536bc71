#include "server/match/MatchResult.h"

#include <iomanip>
#include <sstream>

namespace practice {

namespace {

std::string verdict(const MatchResult& result)
{
    if (result.blueScore == result.redScore) {
        return "a draw";
    }
    return result.blueScore > result.redScore ? "blue wins" : "red wins";
}

std::string headline(const MatchResult& result)
{
    std::ostringstream line;
    line << "match " << result.number << " over after " << result.seconds / 60 << ':' << std::setw(2)
         << std::setfill('0') << result.seconds % 60 << ": " << verdict(result) << ", blue "
         << result.blueScore << " red " << result.redScore;
    return line.str();
}

std::string standingLine(const MatchResult::Standing& standing)
{
    std::ostringstream line;
    line << "  " << std::left << std::setw(5) << (standing.team == Team::blue ? "blue" : "red")
         << std::setw(16) << standing.name << std::right << std::setw(4) << standing.kills << " kills"
         << std::setw(5) << standing.deaths << " deaths";
    return line.str();
}

}  // namespace

std::vector<std::string> scoreTable(const MatchResult& result)
{
    std::vector<std::string> lines{headline(result)};
    for (const MatchResult::Standing& standing : result.standings) {
        lines.push_back(standingLine(standing));
    }
    return lines;
}

}  // namespace practice
