#pragma once

#include "network/MessageTypes.h"

#include <cstddef>
#include <string>

namespace google::protobuf {
class Message;
}

/// The layout of a frame, little-endian:
///
///     offset  size
///     0       2     L, the number of bytes that follow: 1 + the body's size
///     2       1     type byte, a MessageTypes::MessageType
///     3       L-1   body, a serialised message
///
/// The server sends frames like this; a client puts its two-byte qport in front of each.
namespace framing {

constexpr std::size_t lengthSize = 2;  ///< bytes of the length field

/// Appends the low byte, then the high byte.
void appendUint16(std::string& out, unsigned short value);

/// Appends the frame of `message`. A body of 65,535 bytes or more gets a truncated length: ours have a few
/// dozen.
void appendFrame(std::string& out, MessageTypes::MessageType type, const google::protobuf::Message& message);

/// L of the frame that `data`, of at least lengthSize bytes, starts with.
unsigned short frameLength(const char* data);

/// L where `data` starts with a whole frame, else 0. A frame of length 0 thus never counts as whole.
unsigned short wholeFrameLength(const char* data, std::size_t size);

}  // namespace framing
