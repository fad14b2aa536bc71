#pragma once

#include "network/Framing.h"
#include "server/match/Ship.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace practice {

enum class FrameMeaning
{
    steering,
    nothing,  ///< another type, or an orientation that is infinite, zero or no number
    garbage   ///< a body that does not parse
};

/// Reads the steering in a frame; `input` changes only for `steering`. The orientation is normalised, unknown
/// control bits are dropped.
FrameMeaning readSteering(const framing::ClientFrame& frame, ShipInput& input);

/// Cuts one client's TCP stream into frames, with bounded memory.
///
/// A stream that breaks the framing cannot be followed any more: from then on it is lost, and only discarded.
class ClientStream
{
public:
    /// Calls `handle(const framing::ClientFrame&)` for each whole frame, in order.
    template <typename Handler>
    void feed(const char* data, std::size_t size, Handler handle)
    {
        if (lost) {
            return;
        }
        pending.append(data, size);
        std::size_t used = 0;
        framing::ClientFrame frame;
        framing::Cut result = framing::Cut::frame;
        while ((result = framing::cutClientFrame(pending.data() + used, pending.size() - used, frame)) ==
               framing::Cut::frame) {
            handle(frame);
            used += frame.size();
        }
        lost = result == framing::Cut::broken;
        pending.erase(0, lost ? pending.size() : used);
    }

    /// Below `framing::ClientFrame::largest` between two calls, whatever was fed.
    std::size_t pendingBytes() const { return pending.size(); }
    bool isLost() const { return lost; }

private:
    std::string pending;
    bool lost = false;
};

}  // namespace practice
