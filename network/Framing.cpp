#include "network/Framing.h"

#include <google/protobuf/message.h>

#include <limits>

namespace framing {

std::uint16_t uint16At(const char* data)
{
    const auto low = static_cast<unsigned char>(data[0]);
    const auto high = static_cast<unsigned char>(data[1]);
    return static_cast<std::uint16_t>(low + 256U * high);
}

void appendUint16(std::string& out, std::uint16_t value)
{
    out.push_back(static_cast<char>(value & 0xFFU));
    out.push_back(static_cast<char>(value >> 8U));
}

void appendFrame(std::string& out, MessageTypes::MessageType type, const google::protobuf::Message& message)
{
    appendUint16(out, static_cast<std::uint16_t>(message.ByteSizeLong() + 1));
    out.push_back(static_cast<char>(type));
    message.AppendToString(&out);
}

void appendFrame(std::string& out, std::uint8_t type, const std::string& body)
{
    appendUint16(out, static_cast<std::uint16_t>(body.size() + 1));
    out.push_back(static_cast<char>(type));
    out += body;
}

void appendClientFrame(std::string& out, std::uint16_t qport, MessageTypes::MessageType type,
                       const google::protobuf::Message& message)
{
    appendUint16(out, qport);
    appendFrame(out, type, message);
}

std::uint16_t wholeFrameLength(const char* data, std::size_t size)
{
    if (size < lengthSize) {
        return 0;
    }
    const std::uint16_t length = uint16At(data);
    return length > size - lengthSize ? std::uint16_t(0) : length;
}

Cut cutClientFrame(const char* data, std::size_t size, ClientFrame& frame)
{
    constexpr std::size_t lengthEnd = qportSize + lengthSize;
    if (size < lengthEnd) {
        return Cut::incomplete;
    }
    const std::size_t length = uint16At(data + qportSize);
    if (length == 0 || lengthEnd + length > ClientFrame::largest) {
        return Cut::broken;
    }
    if (size < lengthEnd + length) {
        return Cut::incomplete;
    }
    frame = {uint16At(data), static_cast<std::uint8_t>(data[lengthEnd]), data + ClientFrame::headerSize,
             length - 1};
    return Cut::frame;
}

bool parseBody(google::protobuf::Message& message, const char* body, std::size_t size)
{
    return size <= static_cast<std::size_t>(std::numeric_limits<int>::max()) &&
           message.ParsePartialFromArray(body, static_cast<int>(size)) && message.IsInitialized();
}

}  // namespace framing
