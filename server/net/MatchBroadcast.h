#pragma once

#include "server/match/Match.h"

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace practice {

/// Turns what happens in a match into frames for the clients; knows nothing of sockets.
///
/// Events leave through the reliable sink at once, except changed player data: it waits for the next
/// snapshot, because a full state restarts a client's smoothing and must fit into the sequence of states. A
/// ship whose full state leaves at some match time is left out of the snapshot of that time: a client that
/// gets two states with one timestamp would take the ship to stand still.
class MatchBroadcast : public MatchObserver
{
public:
    /// Sends one frame to every client, in order and without loss.
    using ReliableSink = std::function<void(const std::string& frame)>;

    /// Keeps a reference to the match, which may still be under construction.
    MatchBroadcast(const Match& match, ReliableSink sink);

    /// Everything a newcomer must be told after its welcome.
    std::vector<std::string> introduction() const;

    /// To be called after every step of the match: sends what has become due.
    void afterStep();

    /// Sends the changed player data, and returns the datagrams that tell where every ship is; never empty.
    std::vector<std::string> takeSnapshot();

    void shipAppeared(const Ship& ship) override;
    void shipVanished(const Ship& ship) override;
    void shipDataChanged(const Ship& ship) override;
    void shotFired(const Shot& shot) override;
    void shotEnded(const Shot& shot) override;
    void shipExploded(const Ship& ship) override;

private:
    struct DueDestroy
    {
        ObjectId id;
        std::uint64_t step;
    };

    const Match& match;
    ReliableSink sink;
    std::set<ObjectId> changed;    ///< ships whose data has changed since the last snapshot
    std::set<ObjectId> announced;  ///< ships whose full state left at the time `announcedAt`
    std::uint64_t announcedAt = 0;
    std::vector<DueDestroy> dueDestroys;
    ObjectId nextDebris;

    void announce(const Ship& ship);
    void destroyAfter(ObjectId id, std::uint64_t steps);
    bool isAnnouncedNow(ObjectId id) const;
};

}  // namespace practice
