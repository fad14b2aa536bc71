#include "network/Framing.h"

#include <google/protobuf/message.h>

namespace framing {

void appendUint16(std::string& out, unsigned short value)
{
    out.push_back(static_cast<char>(value & 0xFFU));
    out.push_back(static_cast<char>(value >> 8U));
}

void appendFrame(std::string& out, MessageTypes::MessageType type, const google::protobuf::Message& message)
{
    appendUint16(out, static_cast<unsigned short>(message.ByteSizeLong() + 1));
    out.push_back(static_cast<char>(type));
    message.AppendToString(&out);
}

unsigned short frameLength(const char* data)
{
    const auto low = static_cast<unsigned char>(data[0]);
    const auto high = static_cast<unsigned char>(data[1]);
    return static_cast<unsigned short>(low + 256U * high);
}

unsigned short wholeFrameLength(const char* data, std::size_t size)
{
    if (size < lengthSize) {
        return 0;
    }
    const unsigned short length = frameLength(data);
    return length > size - lengthSize ? static_cast<unsigned short>(0) : length;
}

}  // namespace framing
