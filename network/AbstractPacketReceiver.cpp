#include "network/AbstractPacketReceiver.h"

#include "Common/DebugPrint.h"
#include "Common/PrintableText.h"
#include "Common/Protobuf/Object/Object.pb.h"
#include "instrumentation/Logger.h"
#include "network/MessageSerializer.h"
#include "network/MessageTypes.h"

#include <boost/asio/buffer.hpp>
#include <boost/make_shared.hpp>

#include <memory>
#include <string>
#include <utility>

namespace {

// The parser sets the type and the message together, so the type tells the message's class.
template <class M>
M* messageOf(NetworkEvent& event)
{
    return static_cast<M*>(event.message);
}

}  // namespace

AbstractPacketReceiver::AbstractPacketReceiver(boost::asio::io_service* service)
    : ioService(service), udpSocket(*service), udpSender(udp::v4(), 0)
{
}

AbstractPacketReceiver::~AbstractPacketReceiver()
{
    for (const auto& entry : leftovers) {
        delete entry.second;
    }
}

void AbstractPacketReceiver::asyncReceive(tcp::socket* socket)
{
    socket->async_receive(boost::asio::buffer(tcpBuffer),
                          [this, socket](const boost::system::error_code& error, std::size_t bytes) {
                              handleTCPReceive(error, tcpBuffer.data(), bytes, socket);
                          });
}

void AbstractPacketReceiver::asyncReceive(udp::socket* socket)
{
    socket->async_receive_from(boost::asio::buffer(udpBuffer), udpSender,
                               [this, socket](const boost::system::error_code& error, std::size_t bytes) {
                                   handleUDPReceive(error, udpBuffer.data(), bytes, socket);
                               });
}

void AbstractPacketReceiver::handleTCPReceive(const boost::system::error_code& error, char* data,
                                              std::size_t bytes, tcp::socket* socket)
{
    Logger::getInstance()->countPacket(Logger::TCP_RECEIVED, bytes);
    if (error) {
        handleTCPError(error, socket);
        return;
    }
    std::string leftover = takeLeftover(socket);
    if (leftover.size() < leftoverLimit) {
        for (EventPtr& event : MessageSerializer::deserializeMessageArray(data, bytes, &leftover)) {
            addTCPNetworkEvent(std::move(event));
        }
        if (leftover.size() >= leftoverLimit) {
            DebugPrint("TCP stream stalled by a frame of length 0: ignoring all further bytes\n");
        }
    }
    keepLeftover(socket, std::move(leftover));
    asyncReceive(socket);
}

std::string AbstractPacketReceiver::takeLeftover(tcp::socket* socket)
{
    const auto entry = leftovers.find(socket);
    if (entry == leftovers.end()) {
        return {};
    }
    const std::unique_ptr<std::string> owned(entry->second);
    leftovers.erase(entry);
    return std::move(*owned);
}

void AbstractPacketReceiver::keepLeftover(tcp::socket* socket, std::string leftover)
{
    if (!leftover.empty()) {
        leftovers[socket] = new std::string(std::move(leftover));
    }
}

void AbstractPacketReceiver::handleTCPError(const boost::system::error_code& error, tcp::socket* socket)
{
    boost::system::error_code ignored;  // nothing can be done for a socket that fails to close
    socket->cancel(ignored);
    socket->close(ignored);
    DebugPrint("TCP connection CLOSED err:%s\n", error.message().c_str());
    auto event = boost::make_shared<NetworkEvent>();
    event->kind = NetworkEvent::CLOSED_CONNECTION;
    event->socket = socket;
    addTCPNetworkEvent(std::move(event));
}

void AbstractPacketReceiver::handleUDPReceive(const boost::system::error_code& error, char* data,
                                              std::size_t bytes, udp::socket* socket)
{
    Logger::getInstance()->countPacket(Logger::UDP_RECEIVED, bytes);
    if (error) {
        DebugPrint("Error in handleUDPReceive: %s (%d)\n", error.message().c_str(), error.value());
        return;
    }
    std::string leftover;  // nothing is carried over from one datagram to the next
    EventQueue events = MessageSerializer::deserializeMessageArray(data, bytes, &leftover);
    if (!leftover.empty()) {
        const char* const text = leftover.c_str();  // ends at an embedded NUL
        DebugPrintReceived("Error has leftovers after UDP %d of %d - %s\n", static_cast<int>(leftover.size()),
                           static_cast<int>(bytes), printable(text).c_str());
    }
    for (EventPtr& event : events) {
        addUDPNetworkEvent(std::move(event));
    }
    asyncReceive(socket);
}

void AbstractPacketReceiver::addTCPNetworkEvent(EventPtr event)
{
    Logger::getInstance()->countMessage(Logger::TCP_RECEIVED);
    const boost::lock_guard<boost::mutex> lock(tcpMutex);
    tcpEvents.push_back(std::move(event));
}

void AbstractPacketReceiver::addUDPNetworkEvent(EventPtr event)
{
    Logger::getInstance()->countMessage(Logger::UDP_RECEIVED);
    const boost::lock_guard<boost::mutex> lock(udpMutex);
    udpEvents.push_back(std::move(event));
}

bool AbstractPacketReceiver::dispatchEvent(boost::shared_ptr<NetworkEvent> event)
{
    switch (event->kind) {
        case NetworkEvent::MESSAGE:
            return dispatchMessage(*event);
        case NetworkEvent::NEW_CONNECTION:
            return dispatchNewConnection(event->socket);
        case NetworkEvent::CLOSED_CONNECTION:
            return dispatchClosedConnection(event->socket);
        default:
            return false;
    }
}

bool AbstractPacketReceiver::dispatchMessage(NetworkEvent& event)
{
    switch (event.messageType) {
        case MessageTypes::OBJECT_INFO:
            return dispatchObjectInfo(messageOf<Vantor::ObjectInfo>(event));
        case MessageTypes::OBJECT_UPDATE:
            return dispatchObjectUpdate(messageOf<Vantor::ObjectUpdate>(event));
        case MessageTypes::OBJECT_DESTROY:
            return dispatchObjectDestroy(messageOf<Vantor::ObjectDestroy>(event));
        case MessageTypes::CLIENT_UPDATE:
            return dispatchClientUpdate(messageOf<Vantor::ClientUpdate>(event), event.senderTag,
                                        event.endpoint != nullptr ? *event.endpoint : udp::endpoint());
        case MessageTypes::WELCOME:
            return dispatchWelcome(messageOf<Vantor::Welcome>(event));
        default:
            return false;
    }
}
