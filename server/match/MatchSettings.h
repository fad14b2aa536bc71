#pragma once

#include "scene/General.h"

#include <cstdint>

namespace practice {

enum class Difficulty : std::uint8_t
{
    easy,
    normal,
    hard
};

/// What whoever hosts a match chooses; everything else is in Rules.
struct MatchSettings
{
    std::uint32_t seed = 1;  ///< the same seed and the same players' input give the same match
    Difficulty difficulty = Difficulty::normal;  ///< of the bots
    General::Mode spawn = General::Mode::FIXED;  ///< how the teams' starting points are laid out
    int scoreLimit = 50;                         ///< team kills that end a match; 0: none
    int timeLimit = 600;                         ///< seconds after which a match ends; 0: never
    bool friendlyFire = false;                   ///< whether shots also hit their own team, never the shooter
};

}  // namespace practice
