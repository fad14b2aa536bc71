#include "network/PacketSender.h"

#include "Common/DebugPrint.h"
#include "Common/Protobuf/Object/Object.pb.h"
#include "instrumentation/Logger.h"
#include "network/Framing.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/write.hpp>

#include <memory>

PacketSender* PacketSender::PSInstance = nullptr;

PacketSender* PacketSender::getInstance()
{
    if (PSInstance == nullptr) {
        PSInstance = new PacketSender;
    }
    return PSInstance;
}

void PacketSender::send(Vantor::ClientUpdate& msg)
{
    sendMessageUdp(MessageTypes::CLIENT_UPDATE, msg);
}

void PacketSender::sendMessageUdp(MessageTypes::MessageType type, google::protobuf::Message& msg)
{
    if (udpSocket == nullptr || serverEndpoint == nullptr) {
        return;
    }
    std::string* copy = getMessageCopy(type, msg);
    udpSocket->async_send_to(boost::asio::buffer(*copy), *serverEndpoint, 0,
                             [this, copy](const boost::system::error_code& error, std::size_t bytes) {
                                 sendCompleted(error, bytes, copy, false);
                             });
}

void PacketSender::sendMessageTcp(MessageTypes::MessageType type, google::protobuf::Message& msg)
{
    if (tcpSocket == nullptr) {
        return;
    }
    std::string* copy = getMessageCopy(type, msg);
    boost::asio::async_write(*tcpSocket, boost::asio::buffer(*copy),
                             [this, copy](const boost::system::error_code& error, std::size_t bytes) {
                                 sendCompleted(error, bytes, copy, true);
                             });
}

std::string* PacketSender::getMessageCopy(MessageTypes::MessageType type, google::protobuf::Message& msg)
{
    auto copy = std::make_unique<std::string>();
    framing::appendClientFrame(*copy, qport, type, msg);
    return copy.release();
}

void PacketSender::sendCompleted(const boost::system::error_code& error, std::size_t bytes, std::string* copy,
                                 bool isTcp)
{
    const std::unique_ptr<std::string> owned(copy);
    if (error) {
        DebugPrint("Error while sending: %s (code: %d)\n", error.message().c_str(), error.value());
        return;
    }
    Logger::getInstance()->countPacket(isTcp ? Logger::TCP_SENT : Logger::UDP_SENT, bytes);
}
