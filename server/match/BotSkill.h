#pragma once

#include "server/match/MatchSettings.h"
#include "server/match/Random.h"

namespace practice {

/// How well a bot flies and shoots.
struct BotSkill
{
    float aimError;   ///< rad, largest error on each axis
    float aimPeriod;  ///< seconds for which it keeps one error
    float evasion;    ///< chance to break away when hit
    float agility;    ///< share of its fighting time in which it dodges sideways
    float restraint;  ///< seconds between bursts; a burst lasts about one
};

/// One bot's skill: near the difficulty's, better or worse by up to a quarter.
BotSkill drawSkill(Difficulty difficulty, Random& random);

}  // namespace practice
