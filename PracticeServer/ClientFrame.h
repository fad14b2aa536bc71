#pragma once

#include "PracticeServer/Ship.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace practice {

/// One frame as clients send it, with the qport in front:
/// 0 qport (2 bytes) | 2 length L (2 bytes) | 4 type | 5 body (L - 1 bytes), little-endian.
/// The view is valid as long as the bytes it was cut from.
struct ClientFrame
{
    std::uint16_t qport = 0;
    std::uint8_t type = 0;
    const char* body = nullptr;
    std::size_t bodySize = 0;

    std::size_t size() const { return headerSize + bodySize; }

    static constexpr std::size_t headerSize = 5;
    /// Bytes; a client's update takes 34. Nothing longer can be meant for us.
    static constexpr std::size_t largest = 256;
};

enum class CutResult
{
    frame,
    incomplete,
    broken
};

/// Reads the frame at the start of the bytes. `broken`: the length makes no sense, so nothing behind
/// it can be found either.
CutResult cutClientFrame(const char* data, std::size_t size, ClientFrame& frame);

enum class FrameMeaning
{
    steering,
    nothing,  ///< another type, or an orientation that is infinite, zero or no number
    garbage   ///< a body that does not parse
};

/// Reads the steering in a frame; `input` changes only for `steering`. The orientation is normalised, unknown
/// control bits are dropped.
FrameMeaning readSteering(const ClientFrame& frame, ShipInput& input);

/// Cuts one client's TCP stream into frames, with bounded memory.
///
/// A stream that breaks the framing cannot be followed any more: from then on it is lost, and only discarded.
class ClientStream
{
public:
    /// Calls `handle(const ClientFrame&)` for each whole frame, in order.
    template <typename Handler>
    void feed(const char* data, std::size_t size, Handler handle)
    {
        if (lost) {
            return;
        }
        pending.append(data, size);
        std::size_t used = 0;
        ClientFrame frame;
        CutResult result = CutResult::frame;
        while ((result = cutClientFrame(pending.data() + used, pending.size() - used, frame)) ==
               CutResult::frame) {
            handle(frame);
            used += frame.size();
        }
        lost = result == CutResult::broken;
        pending.erase(0, lost ? pending.size() : used);
    }

    /// Below `ClientFrame::largest` between two calls, whatever was fed.
    std::size_t pendingBytes() const { return pending.size(); }
    bool isLost() const { return lost; }

private:
    std::string pending;
    bool lost = false;
};

}  // namespace practice
