#pragma once

#include "Common/Protobuf/Object/Object.pb.h"
#include "PracticeServer/Ship.h"
#include "network/MessageTypes.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ip/udp.hpp>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// A client's steering as it goes over the wire.
std::string steeringFrame(std::uint16_t qport, const practice::ShipInput& input);

/// A message the server sent, still packed.
struct ServerMessage
{
    MessageTypes::MessageType type;
    std::string body;

    template <typename Message>
    Message as() const
    {
        Message message;
        message.ParseFromString(body);
        return message;
    }
};

/// The messages in a run of server frames.
std::vector<ServerMessage> messagesIn(const std::string& frames);

/// The messages of one class, parsed.
template <typename Message>
std::vector<Message> messagesOf(const std::vector<ServerMessage>& messages, MessageTypes::MessageType type)
{
    std::vector<Message> found;
    for (const ServerMessage& message : messages) {
        if (message.type == type) {
            found.push_back(message.as<Message>());
        }
    }
    return found;
}

/// A player's end of the protocol over real sockets on 127.0.0.1; never blocks, so that one test thread can
/// run it together with a server.
class TestClient
{
public:
    explicit TestClient(std::uint16_t serverPort);

    /// Takes what has arrived.
    void poll();
    void steer(const practice::ShipInput& input);
    void sendDatagram(const std::string& bytes);
    void sendStream(const std::string& bytes);
    void hangUp() { tcp.close(); }

    bool isWelcome() const { return !reliable.empty(); }
    /// The first message, which must be the welcome.
    Vantor::Welcome welcome() const { return reliable.at(0).as<Vantor::Welcome>(); }
    std::uint16_t qport() const { return static_cast<std::uint16_t>(welcome().qport()); }

    std::vector<ServerMessage> reliable;  ///< all that came over TCP
    std::vector<std::string> datagrams;
    bool serverHungUp = false;

    std::vector<Vantor::ObjectInfo> infos() const;
    std::vector<Vantor::ObjectUpdate> updates() const;
    /// The newest known position; the own ship's announcement counts.
    Vector3 positionOf(std::uint64_t id) const;

private:
    boost::asio::io_context io;
    boost::asio::ip::tcp::socket tcp;
    boost::asio::ip::udp::socket udp;
    boost::asio::ip::udp::endpoint server;
    std::string stream;
};
