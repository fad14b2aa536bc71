#pragma once

#include "server/match/Shot.h"

namespace practice {

/// Hears what happens in a match, in the order in which it happens.
///
/// Called from within the match's own operations: an observer may read the match but not change it.
class MatchObserver
{
public:
    virtual ~MatchObserver() = default;

    virtual void shipAppeared(const Ship& ship) = 0;     ///< joined or returned from death
    virtual void shipVanished(const Ship& ship) = 0;     ///< died, or left while alive
    virtual void shipDataChanged(const Ship& ship) = 0;  ///< health, own score or a team's score
    virtual void shotFired(const Shot& shot) = 0;
    virtual void shotEnded(const Shot& shot) = 0;     ///< hit something or reached its range
    virtual void shipExploded(const Ship& ship) = 0;  ///< just before a dying ship vanishes
};

}  // namespace practice
