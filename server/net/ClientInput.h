#pragma once

#include "network/Framing.h"
#include "server/match/Ship.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace practice {

// What a client sends: the frames in its stream and in its datagrams, and the steering in a frame. Stateless;
// nothing in the bytes is trusted.

using FrameHandler = std::function<void(const framing::ClientFrame&)>;

/// Handles the whole frames at the front of a stream and removes them; fewer than `ClientFrame::largest`
/// bytes are left. Returns false if the next bytes are no frame: the stream cannot be followed any more.
bool cutStream(std::string& stream, const FrameHandler& handle);

/// Handles the frames of a datagram up to the first one of another qport. Returns false if bytes before that
/// are no whole frame.
bool cutDatagram(const char* data, std::size_t size, std::uint16_t qport, const FrameHandler& handle);

enum class FrameMeaning : std::uint8_t
{
    steering,
    nothing,  ///< another type, or an orientation that is zero, infinite or NaN
    garbage   ///< a body that does not parse
};

/// Reads the steering in a frame; changes `input` only for FrameMeaning::steering. Normalises the orientation
/// and removes unknown control bits.
FrameMeaning readSteering(const framing::ClientFrame& frame, ShipInput& input);

}  // namespace practice
