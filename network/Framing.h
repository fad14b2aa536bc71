#pragma once

#include "network/MessageTypes.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace google::protobuf {
class Message;
}

/// The layout of frames, little-endian. From the server:
///
///     offset  size
///     0       2     L, the number of bytes that follow: 1 + the body's size
///     2       1     type byte, a MessageTypes::MessageType
///     3       L-1   body, a serialised message
///
/// A client puts its qport in front, the two-byte tag that the server's Welcome gave it:
///
///     offset  size
///     0       2     qport
///     2       2     L
///     4       1     type byte
///     5       L-1   body
///
/// Client loops are in MessageSerializer::deserializeMessageArray, server loops in ClientSession and
/// PracticeServer. Stateless; any thread. No function reads beyond the size it is given.
namespace framing {

constexpr std::size_t qportSize = 2;   ///< bytes
constexpr std::size_t lengthSize = 2;  ///< bytes

/// Reads the number in the two bytes at `data`.
std::uint16_t uint16At(const char* data);
void appendUint16(std::string& out, std::uint16_t value);

/// Appends a server's frame. A body of 65,535 bytes or more gets a wrong length; ours have a few dozen.
void appendFrame(std::string& out, MessageTypes::MessageType type, const google::protobuf::Message& message);
/// The same with a body of any bytes.
void appendFrame(std::string& out, std::uint8_t type, const std::string& body);
/// Appends a client's frame.
void appendClientFrame(std::string& out, std::uint16_t qport, MessageTypes::MessageType type,
                       const google::protobuf::Message& message);

/// Returns L if `data` starts with a whole frame of a server, else 0. So a frame of length 0 is never whole.
std::uint16_t wholeFrameLength(const char* data, std::size_t size);

/// A frame of a client. `body` points into the bytes that it was cut from.
struct ClientFrame
{
    std::uint16_t qport = 0;
    std::uint8_t type = 0;
    const char* body = nullptr;
    std::size_t bodySize = 0;

    std::size_t size() const { return headerSize + bodySize; }

    static constexpr std::size_t headerSize = 5;
    static constexpr std::size_t largest =
        256;  ///< bytes; a ClientUpdate takes 34, nothing longer makes sense
};

enum class Cut : std::uint8_t
{
    frame,
    incomplete,
    broken  ///< a length of 0 or above ClientFrame::largest; the rest of the stream is unreadable
};

/// Cuts the frame of a client that `data` starts with. Sets `frame` only if the result is Cut::frame.
Cut cutClientFrame(const char* data, std::size_t size, ClientFrame& frame);

/// Parses a body. Returns false if it is malformed or lacks a required field, and prints nothing:
/// ParseFromArray would write a line to standard error for each bad frame.
bool parseBody(google::protobuf::Message& message, const char* body, std::size_t size);

}  // namespace framing
