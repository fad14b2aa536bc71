#pragma once

#include "peer/SwarmClient.h"

#include <chrono>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace peer {

/// Many clients of one server on one thread, and the figures of what they heard.
class Swarm
{
public:
    Swarm(const boost::asio::ip::tcp::endpoint& server, unsigned number);

    /// Plays for a while to warm up, then measures.
    void play(std::chrono::seconds warmUp, std::chrono::seconds measured);

    /// Prints the figures; false where the server did not keep its promise of 20 snapshots a second to
    /// everyone, or sent anything wrong.
    bool report(std::ostream& out) const;

private:
    boost::asio::io_context io{1};
    std::vector<std::unique_ptr<SwarmClient>> clients;
    double seconds = 0.0;

    std::vector<double> snapshotRates() const;
    double longestGap() const;
    void reportLoss(std::ostream& out) const;
    bool reportFaults(std::ostream& out) const;
};

}  // namespace peer
