#include "server/net/ClientInput.h"

#include "network/MessageTypes.h"
#include "network/Messages.h"

#include <cmath>
#include <optional>

namespace practice {

namespace {

constexpr std::uint32_t knownControls = control::forward | control::backward | control::right |
                                        control::left | control::up | control::down | control::fire;

/// A client sends length 1, but for rounding. Lengths far from it cannot be normalised safely.
bool isOrientation(const Quaternion& q)
{
    const float length = q.length();
    return std::isfinite(length) && length > 0.001F && length < 1000.0F;
}

}  // namespace

FrameMeaning readSteering(const framing::ClientFrame& frame, ShipInput& input)
{
    if (frame.type != MessageTypes::CLIENT_UPDATE) {
        return FrameMeaning::nothing;
    }
    std::optional<messages::Steering> steering = messages::readSteering(frame);
    if (!steering) {
        return FrameMeaning::garbage;
    }
    if (!isOrientation(steering->orientation)) {
        return FrameMeaning::nothing;
    }
    steering->orientation.normalise();
    input = {steering->orientation, steering->controls & knownControls};
    return FrameMeaning::steering;
}

}  // namespace practice
