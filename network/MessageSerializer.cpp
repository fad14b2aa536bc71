#include "network/MessageSerializer.h"

#include "Common/DebugPrint.h"
#include "Common/Protobuf/Object/Object.pb.h"
#include "network/Framing.h"
#include "network/NetworkEvent.h"

#include <boost/make_shared.hpp>

#include <cstdint>
#include <memory>
#include <utility>

namespace {

using EventList = std::list<boost::shared_ptr<NetworkEvent>>;

// Null where the type byte names no message.
std::unique_ptr<google::protobuf::Message> makeMessage(unsigned int type)
{
    switch (type) {
        case MessageTypes::OBJECT_INFO:
            return std::make_unique<Vantor::ObjectInfo>();
        case MessageTypes::OBJECT_UPDATE:
            return std::make_unique<Vantor::ObjectUpdate>();
        case MessageTypes::OBJECT_DESTROY:
            return std::make_unique<Vantor::ObjectDestroy>();
        case MessageTypes::CLIENT_UPDATE:
            return std::make_unique<Vantor::ClientUpdate>();
        case MessageTypes::WELCOME:
            return std::make_unique<Vantor::Welcome>();
        default:
            return nullptr;
    }
}

}  // namespace

std::string MessageSerializer::getSerializedMsg(MessageTypes::MessageType type,
                                                google::protobuf::Message& msg)
{
    std::string frame;
    framing::appendFrame(frame, type, msg);
    return frame;
}

std::string MessageSerializer::serializeMessage(Vantor::ObjectInfo& msg)
{
    return getSerializedMsg(MessageTypes::OBJECT_INFO, msg);
}

std::string MessageSerializer::serializeMessage(Vantor::ObjectUpdate& msg)
{
    return getSerializedMsg(MessageTypes::OBJECT_UPDATE, msg);
}

std::string MessageSerializer::serializeMessage(Vantor::ObjectDestroy& msg)
{
    return getSerializedMsg(MessageTypes::OBJECT_DESTROY, msg);
}

std::string MessageSerializer::serializeMessage(Vantor::ClientUpdate& msg)
{
    return getSerializedMsg(MessageTypes::CLIENT_UPDATE, msg);
}

std::string MessageSerializer::serializeMessage(Vantor::Welcome& msg)
{
    return getSerializedMsg(MessageTypes::WELCOME, msg);
}

unsigned short MessageSerializer::messageIsLongEnough(std::string& buffer)
{
    return framing::wholeFrameLength(buffer.data(), buffer.size());
}

EventList MessageSerializer::deserializeMessageArray(const char* data, std::size_t size,
                                                     std::string* leftover)
{
    leftover->append(data, size);
    EventList events;
    std::size_t used = 0;
    while (const std::uint16_t length =
               framing::wholeFrameLength(leftover->data() + used, leftover->size() - used)) {
        auto event = boost::make_shared<NetworkEvent>();
        if (realParsePacket(leftover->data() + used + framing::lengthSize, length, event, "")) {
            events.push_back(std::move(event));
        } else {
            DebugPrintReceived("Error in deserializing of message\n");
        }
        used += framing::lengthSize + length;
    }
    leftover->erase(0, used);
    return events;
}

bool MessageSerializer::deserializeMessage(std::string frame, boost::shared_ptr<NetworkEvent> event)
{
    return realParsePacket(frame.data(), frame.size(), std::move(event), "");
}

bool MessageSerializer::realParsePacket(const char* data, std::size_t size,
                                        boost::shared_ptr<NetworkEvent> event, std::string info)
{
    const unsigned int type = size == 0 ? 0U : static_cast<unsigned char>(data[0]);
    std::unique_ptr<google::protobuf::Message> message = makeMessage(type);
    if (!message) {
        DebugPrintReceived("Unknown message type received (type byte: 0x%x) info %s\n", type, info.c_str());
        return false;
    }
    event->kind = NetworkEvent::MESSAGE;
    event->messageType = type;
    if (!framing::parseBody(*message, data + 1, size - 1)) {
        DebugPrintReceived("Error in parseing message %s\n", info.c_str());
        return false;
    }
    delete event->message;
    event->message = message.release();
    return true;
}
