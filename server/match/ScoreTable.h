#pragma once

#include "server/match/MatchResult.h"

#include <string>
#include <vector>

namespace practice {

/// The table of a finished match, a headline and one line for each player.
std::vector<std::string> scoreTable(const MatchResult& result);

}  // namespace practice
