#pragma once

#include "server/match/Match.h"

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace practice {

// The state of a match as frames. Timestamps are match time, so clients measure true velocities.
std::string welcomeFrame(const Ship& ship, std::uint16_t qport, const Match& match);
std::string shipInfoFrame(const Ship& ship, const Match& match);
std::string shotInfoFrame(const Shot& shot, std::uint32_t timestamp);

/// Turns what happens in a match into frames for the clients. Knows nothing of sockets.
///
/// Events leave through the reliable sink at once. Changed player data waits for the next snapshot. A full
/// state restarts a client's smoothing, so it must fit into the sequence of states. A snapshot omits the
/// ships whose full state left at the same match time. From two states with one timestamp, a client would
/// compute that the ship stands still.
class MatchBroadcast : public MatchObserver
{
public:
    /// Sends one frame to every client, in order and without loss.
    using ReliableSink = std::function<void(const std::string& frame)>;

    /// Bytes; passes every common link unfragmented and fits the client's 2048-byte buffer.
    static constexpr std::size_t largestDatagram = 1200;

    /// Keeps a reference to the match, which may still be under construction.
    MatchBroadcast(const Match& match, ReliableSink sink);

    /// The frames that a new client gets after its welcome: one for each ship and shot.
    std::vector<std::string> introduction() const;

    /// To be called after every step of the match: sends what has become due.
    void afterStep();

    /// Sends the changed player data, and returns datagrams with the pose of every other ship. There is at
    /// least one datagram, perhaps an empty one, because a client ends when it receives none.
    std::vector<std::string> takeSnapshot();

    void shipAppeared(const Ship& ship) override { announce(ship); }
    void shipVanished(const Ship& ship) override;
    void shipDataChanged(const Ship& ship) override { changed.insert(ship.id); }
    void shotFired(const Shot& shot) override { sink(shotInfoFrame(shot, match.timestamp())); }
    void shotEnded(const Shot& shot) override;
    void shipExploded(const Ship& ship) override;

private:
    const Match& match;
    ReliableSink sink;
    std::set<ObjectId> changed;                     ///< ships whose data has changed since the last snapshot
    std::map<ObjectId, std::uint64_t> announcedAt;  ///< step in which a ship's full state left last
    std::multimap<std::uint64_t, ObjectId> destroyAt;  ///< what explodes later, by the step
    ObjectId nextDebris;

    void announce(const Ship& ship);
    void destroyAfter(ObjectId id, std::uint64_t steps) { destroyAt.emplace(match.stepCount() + steps, id); }
};

}  // namespace practice
