#pragma once

#include "Common/Protobuf/Object/Object.pb.h"
#include "PracticeServer/ClientFrame.h"
#include "network/MessageTypes.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ip/udp.hpp>

#include <string>
#include <vector>

/// What a server has said, in order.
struct Heard
{
    std::vector<MessageTypes::MessageType> types;
    Vantor::Welcome welcome;
    std::vector<Vantor::ObjectInfo> infos;
    std::vector<Vantor::ObjectUpdate> updates;
    std::vector<Vantor::ObjectDestroy> destroys;

    /// Moves the whole frames at the front of the stream here.
    void take(std::string& stream);
    /// The newest state of a ship; its announcement counts.
    Vector3 positionOf(std::uint64_t id) const;
};

/// A player's end of the protocol over real sockets on 127.0.0.1; never waits, so that one test thread can
/// run it together with a server.
class TestClient
{
public:
    explicit TestClient(std::uint16_t serverPort);

    /// Takes what has arrived.
    void poll();
    void steer(const practice::ShipInput& input) { sendDatagram(practice::steeringFrame(qport(), input)); }
    void sendDatagram(const std::string& bytes);
    void sendStream(const std::string& bytes);
    void hangUp() { tcp.close(); }
    /// From now on the stream is not read, and as little as possible is kept of it.
    void stopReading();

    std::uint64_t id() const { return heard.welcome.id(); }
    /// Its end of the connection, as "127.0.0.1:40000".
    const std::string& address() const { return ownAddress; }
    std::uint16_t qport() const { return static_cast<std::uint16_t>(heard.welcome.qport()); }
    Vector3 position() const { return heard.positionOf(id()); }

    Heard heard;
    std::vector<std::string> datagrams;
    bool serverHungUp = false;
    bool reads = true;

private:
    boost::asio::io_context io;
    boost::asio::ip::tcp::socket tcp;
    boost::asio::ip::udp::socket udp;
    boost::asio::ip::udp::endpoint server;
    std::string ownAddress;
    std::string stream;
};
