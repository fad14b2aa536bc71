#include "PracticeServer/ClientFrame.h"

#include "Common/Protobuf/Object/Object.pb.h"
#include "network/MessageTypes.h"

#include <cmath>

namespace practice {

namespace {

constexpr std::uint32_t knownControls = control::forward | control::backward | control::right |
                                        control::left | control::up | control::down | control::fire;

std::uint16_t littleEndian16(const char* data)
{
    const auto low = static_cast<unsigned char>(data[0]);
    const auto high = static_cast<unsigned char>(data[1]);
    return static_cast<std::uint16_t>(low | high << 8U);
}

/// A camera's orientation has length 1 but for rounding; anything near zero or beyond reason is no
/// orientation.
bool isOrientation(const Quaternion& q)
{
    const float length = q.length();
    return std::isfinite(length) && length > 0.001F && length < 1000.0F;
}

}  // namespace

CutResult cutClientFrame(const char* data, std::size_t size, ClientFrame& frame)
{
    if (size < 4) {
        return CutResult::incomplete;
    }
    const std::size_t length = littleEndian16(data + 2);
    if (length == 0 || 4 + length > ClientFrame::largest) {
        return CutResult::broken;
    }
    if (size < 4 + length) {
        return CutResult::incomplete;
    }
    frame.qport = littleEndian16(data);
    frame.type = static_cast<std::uint8_t>(data[4]);
    frame.body = data + ClientFrame::headerSize;
    frame.bodySize = length - 1;
    return CutResult::frame;
}

FrameMeaning readSteering(const ClientFrame& frame, ShipInput& input)
{
    if (frame.type != MessageTypes::CLIENT_UPDATE) {
        return FrameMeaning::nothing;
    }
    Vantor::ClientUpdate update;
    // A partial parse, because the full one complains on standard error about every missing field.
    if (!update.ParsePartialFromArray(frame.body, static_cast<int>(frame.bodySize)) ||
        !update.IsInitialized()) {
        return FrameMeaning::garbage;
    }
    const Vantor::Orientation& q = update.orientation();
    Quaternion orientation(q.w(), q.x(), q.y(), q.z());
    if (!isOrientation(orientation)) {
        return FrameMeaning::nothing;
    }
    orientation.normalise();
    input = {orientation, update.boosterson() & knownControls};
    return FrameMeaning::steering;
}

}  // namespace practice
