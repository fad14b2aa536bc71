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

bool cutStream(std::string& stream, const FrameHandler& handle)
{
    std::size_t used = 0;
    framing::ClientFrame frame;
    framing::Cut result = framing::Cut::frame;
    while ((result = framing::cutClientFrame(stream.data() + used, stream.size() - used, frame)) ==
           framing::Cut::frame) {
        handle(frame);
        used += frame.size();
    }
    stream.erase(0, used);
    return result != framing::Cut::broken;
}

bool cutDatagram(const char* data, std::size_t size, std::uint16_t qport, const FrameHandler& handle)
{
    framing::ClientFrame frame;
    for (std::size_t used = 0; used < size; used += frame.size()) {
        if (framing::cutClientFrame(data + used, size - used, frame) != framing::Cut::frame) {
            return false;
        }
        if (frame.qport != qport) {
            return true;
        }
        handle(frame);
    }
    return true;
}

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
