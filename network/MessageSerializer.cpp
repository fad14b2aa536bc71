#include "network/MessageSerializer.h"

#include "Common/DebugPrint.h"
#include "Common/Protobuf/Object/Object.pb.h"
#include "network/Framing.h"
#include "network/NetworkEvent.h"

#include <boost/make_shared.hpp>

#include <algorithm>
#include <memory>
#include <utility>

namespace {

using EventList = std::list<boost::shared_ptr<NetworkEvent>>;

std::unique_ptr<google::protobuf::Message> makeMessage(unsigned char type)
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

bool parseFrame(const char* data, std::size_t size, NetworkEvent& event, const char* info)
{
    const unsigned char type =
        size == 0 ? static_cast<unsigned char>(0) : static_cast<unsigned char>(data[0]);
    std::unique_ptr<google::protobuf::Message> message = makeMessage(type);
    if (!message) {
        DebugPrint("Unknown message type received (type byte: 0x%x) info %s\n",
                   static_cast<unsigned int>(type), info);
        return false;
    }
    event.kind = NetworkEvent::MESSAGE;
    event.messageType = type;
    if (!framing::parseBody(*message, data + 1, size - 1)) {
        DebugPrint("Error in parseing message %s\n", info);
        return false;
    }
    delete event.message;
    event.message = message.release();
    return true;
}

// Appends the events of all whole frames at the front of `data` and returns how many bytes they took.
std::size_t cutFrames(const char* data, std::size_t size, EventList& events)
{
    std::size_t used = 0;
    while (const unsigned short length = framing::wholeFrameLength(data + used, size - used)) {
        auto event = boost::make_shared<NetworkEvent>();
        if (parseFrame(data + used + framing::lengthSize, length, *event, "")) {
            events.push_back(std::move(event));
        } else {
            DebugPrint("Error in deserializing of message\n");
        }
        used += framing::lengthSize + length;
    }
    return used;
}

// Appends to `tail` what the frame that it starts with still lacks, as far as `data` reaches; returns how
// many bytes that took.
std::size_t completeFrame(std::string& tail, const char* data, std::size_t size)
{
    std::size_t used = 0;
    const auto fillTo = [&](std::size_t length) {
        const std::size_t lacking = length - std::min(length, tail.size());
        const std::size_t taken = std::min(lacking, size - used);
        tail.append(data + used, taken);
        used += taken;
    };
    fillTo(framing::lengthSize);
    if (tail.size() >= framing::lengthSize) {
        fillTo(framing::lengthSize + framing::uint16At(tail.data()));
    }
    return used;
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
    EventList events;
    std::size_t used = 0;
    // First the frame that the previous run broke off in; then the rest is cut where it lies.
    while (!leftover->empty()) {
        used += completeFrame(*leftover, data + used, size - used);
        const std::size_t cut = cutFrames(leftover->data(), leftover->size(), events);
        if (cut == 0) {
            break;
        }
        leftover->erase(0, cut);
    }
    if (leftover->empty()) {
        used += cutFrames(data + used, size - used, events);
    }
    leftover->append(data + used, size - used);
    return events;
}

bool MessageSerializer::deserializeMessage(std::string frame, boost::shared_ptr<NetworkEvent> event)
{
    return realParsePacket(frame.data(), frame.size(), std::move(event), "");
}

bool MessageSerializer::realParsePacket(const char* data, std::size_t size,
                                        boost::shared_ptr<NetworkEvent> event, std::string info)
{
    return parseFrame(data, size, *event, info.c_str());
}
