#pragma once

#include "network/MessageTypes.h"

#include <boost/shared_ptr.hpp>

#include <cstddef>
#include <list>
#include <string>

class NetworkEvent;

namespace google::protobuf {
class Message;
}

namespace Vantor {
class ClientUpdate;
class ObjectDestroy;
class ObjectInfo;
class ObjectUpdate;
class Welcome;
}  // namespace Vantor

/// Turns messages into frames, and received bytes into messages (network/Framing.h has the layout).
///
/// Stateless and reentrant. Nothing received is trusted: a bad frame is reported through DebugPrint and
/// skipped. Nothing is thrown.
class MessageSerializer
{
public:
    /// The server-to-client frame of `msg`.
    static std::string getSerializedMsg(MessageTypes::MessageType type, google::protobuf::Message& msg);

    static std::string serializeMessage(Vantor::ObjectInfo& msg);
    static std::string serializeMessage(Vantor::ObjectUpdate& msg);
    static std::string serializeMessage(Vantor::ObjectDestroy& msg);
    static std::string serializeMessage(Vantor::ClientUpdate& msg);
    static std::string serializeMessage(Vantor::Welcome& msg);

    /// The length field if the buffer starts with a whole frame, else 0.
    static unsigned short messageIsLongEnough(std::string& buffer);

    /// Cuts *leftover followed by `data` into events, in order; the incomplete tail becomes the new
    /// *leftover.
    ///
    /// Costs one pass over the bytes, whatever the number of frames. Nothing behind a length field of 0 is
    /// read: it all stays in *leftover.
    static std::list<boost::shared_ptr<NetworkEvent>> deserializeMessageArray(const char* data,
                                                                              std::size_t size,
                                                                              std::string* leftover);

    /// Parses one frame, without its length field, into `event`. A bad frame yields false and a diagnostic.
    static bool deserializeMessage(std::string frame, boost::shared_ptr<NetworkEvent> event);

    /// Does the work of deserializeMessage; `info` is added to the diagnostics.
    static bool realParsePacket(const char* data, std::size_t size, boost::shared_ptr<NetworkEvent> event,
                                std::string info);
};
