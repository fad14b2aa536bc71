#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ip/udp.hpp>

namespace google::protobuf {
class Message;
}

/// One received message, or the news that a connection opened or closed.
///
/// Made on the network thread, handled and destroyed on the thread that drains the queues; always held by
/// boost::shared_ptr, never shared while it changes.
class NetworkEvent
{
public:
    enum Kind : unsigned int
    {
        MESSAGE = 0,
        NEW_CONNECTION = 1,
        CLOSED_CONNECTION = 2
    };

    unsigned int senderTag = 0;                    ///< handed on beside a ClientUpdate; a client leaves it 0
    unsigned int kind = MESSAGE;                   ///< a Kind
    unsigned int messageType = 0;                  ///< a MessageTypes::MessageType where kind is MESSAGE
    google::protobuf::Message* message = nullptr;  ///< owned; null unless kind is MESSAGE
    boost::asio::ip::udp::endpoint* endpoint =
        nullptr;  ///< owned; who sent the datagram, null where not recorded
    boost::asio::ip::tcp::socket* socket = nullptr;  ///< not owned; the connection of the other two kinds

    NetworkEvent() = default;
    ~NetworkEvent();
    NetworkEvent(const NetworkEvent&) = delete;
    NetworkEvent& operator=(const NetworkEvent&) = delete;
};
