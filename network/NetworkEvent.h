#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ip/udp.hpp>

namespace google::protobuf {
class Message;
}

/// One received message, or the note that a connection opened or closed.
///
/// The network thread makes it; the thread that drains the queues handles and destroys it. Held by
/// boost::shared_ptr; only one thread uses it at a time.
class NetworkEvent
{
public:
    enum Kind : unsigned int
    {
        MESSAGE = 0,
        NEW_CONNECTION = 1,
        CLOSED_CONNECTION = 2
    };

    unsigned int senderTag = 0;                          ///< passed on with a ClientUpdate; 0 in a client
    unsigned int kind = MESSAGE;                         ///< a Kind
    unsigned int messageType = 0;                        ///< a MessageTypes::MessageType, if kind is MESSAGE
    google::protobuf::Message* message = nullptr;        ///< owned; null unless kind is MESSAGE
    boost::asio::ip::udp::endpoint* endpoint = nullptr;  ///< owned; the datagram's sender, null in a client
    boost::asio::ip::tcp::socket* socket = nullptr;      ///< not owned; for the other two kinds

    NetworkEvent() = default;
    ~NetworkEvent();
    NetworkEvent(const NetworkEvent&) = delete;
    NetworkEvent& operator=(const NetworkEvent&) = delete;
};
