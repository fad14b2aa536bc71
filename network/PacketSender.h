#pragma once

#include "network/MessageTypes.h"

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ip/udp.hpp>

#include <cstddef>
#include <string>

namespace google::protobuf {
class Message;
}

namespace Vantor {
class ClientUpdate;
}

/// Sends messages to the server, asynchronously, each as one frame behind the client's qport.
///
/// A singleton, created on first use and never destroyed. Setters and sends belong to the main thread;
/// sendCompleted runs on the network thread. A message may be changed or destroyed as soon as a send returns.
/// Until the sockets are set, messages are silently dropped. A failed send prints one line and is not
/// repeated.
class PacketSender
{
public:
    static PacketSender* PSInstance;
    static PacketSender* getInstance();

    void setSocket(boost::asio::ip::tcp::socket* socket) { tcpSocket = socket; }
    void setSocket(boost::asio::ip::udp::socket* socket) { udpSocket = socket; }
    void setEndpoint(boost::asio::ip::udp::endpoint* endpoint) { serverEndpoint = endpoint; }
    void setQPort(unsigned short newQport) { qport = newQport; }

    /// Over UDP, as one datagram.
    void send(Vantor::ClientUpdate& msg);
    void sendMessageUdp(MessageTypes::MessageType type, google::protobuf::Message& msg);
    /// At most one at a time: two pending writes could mix on the stream.
    void sendMessageTcp(MessageTypes::MessageType type, google::protobuf::Message& msg);

    /// The bytes to send: qport, then the frame. The caller owns the string.
    std::string* getMessageCopy(MessageTypes::MessageType type, google::protobuf::Message& msg);

    /// Counts the bytes, or prints the error; frees `copy`.
    void sendCompleted(const boost::system::error_code& error, std::size_t bytes, std::string* copy,
                       bool isTcp);

    boost::asio::ip::tcp::socket* tcpSocket = nullptr;         ///< not owned
    boost::asio::ip::udp::socket* udpSocket = nullptr;         ///< not owned
    boost::asio::ip::udp::endpoint* serverEndpoint = nullptr;  ///< not owned
    unsigned short qport = 0;                                  ///< 0 until the server's Welcome
};
