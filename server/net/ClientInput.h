#pragma once

#include "network/Framing.h"
#include "server/match/Ship.h"

#include <cstdint>

namespace practice {

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
