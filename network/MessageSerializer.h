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

/// Makes frames of messages, and messages of received bytes (the layout is in network/Framing.h).
///
/// Stateless and reentrant. Nothing received is trusted: a bad frame is reported through DebugPrint and
/// skipped, whatever its bytes, and nothing is thrown.
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

    /// The length field where the buffer starts with a whole frame, else 0.
    static unsigned short messageIsLongEnough(std::string& buffer);

    /// Cuts *leftover followed by `data` into events, in order; the incomplete tail becomes the new
    /// *leftover.
    ///
    /// Costs one pass over the bytes, whatever the number of frames, and copies no body but one that two runs
    /// share. A length field of 0 is never passed: that stream yields nothing more.
    static std::list<boost::shared_ptr<NetworkEvent>> deserializeMessageArray(const char* data,
                                                                              std::size_t size,
                                                                              std::string* leftover);

    /// Parses one frame, without its length field, into `event`; false (and a diagnostic) where it is
    /// malformed.
    static bool deserializeMessage(std::string frame, boost::shared_ptr<NetworkEvent> event);

    /// Does the work of deserializeMessage; `info` is added to the diagnostics.
    static bool realParsePacket(const char* data, std::size_t size, boost::shared_ptr<NetworkEvent> event,
                                std::string info);
};
