#include "tests/PracticeServer/TestClient.h"

#include "network/Framing.h"

#include <boost/asio/write.hpp>

#include <array>
#include <stdexcept>

namespace {

const boost::asio::ip::address_v4 loopback = boost::asio::ip::address_v4::loopback();

/// Moves the whole frames at the front of `stream` into `messages`.
void cut(std::string& stream, std::vector<ServerMessage>& messages)
{
    while (const unsigned short length = framing::wholeFrameLength(stream.data(), stream.size())) {
        messages.push_back(
            {static_cast<MessageTypes::MessageType>(stream[2]), stream.substr(3, length - 1U)});
        stream.erase(0, framing::lengthSize + length);
    }
}

Vector3 vectorOf(const Vantor::Position& p)
{
    return {p.x(), p.y(), p.z()};
}

}  // namespace

std::string steeringFrame(std::uint16_t qport, const practice::ShipInput& input)
{
    Vantor::ClientUpdate update;
    update.mutable_orientation()->set_w(input.orientation.w);
    update.mutable_orientation()->set_x(input.orientation.x);
    update.mutable_orientation()->set_y(input.orientation.y);
    update.mutable_orientation()->set_z(input.orientation.z);
    update.set_boosterson(input.controls);
    std::string frame;
    framing::appendUint16(frame, qport);
    framing::appendFrame(frame, MessageTypes::CLIENT_UPDATE, update);
    return frame;
}

std::vector<ServerMessage> messagesIn(const std::string& frames)
{
    std::vector<ServerMessage> messages;
    std::string rest = frames;
    cut(rest, messages);
    if (!rest.empty()) {
        throw std::runtime_error("half a frame at the end");
    }
    return messages;
}

TestClient::TestClient(std::uint16_t serverPort)
    : tcp(io), udp(io, {loopback, 0}), server(loopback, serverPort)
{
    tcp.connect({loopback, serverPort});
    tcp.non_blocking(true);
    udp.non_blocking(true);
}

void TestClient::poll()
{
    std::array<char, 65536> buffer;
    boost::system::error_code error;
    for (;;) {
        const std::size_t bytes = udp.receive_from(boost::asio::buffer(buffer), server, 0, error);
        if (error) {
            break;
        }
        datagrams.emplace_back(buffer.data(), bytes);
    }
    while (tcp.is_open()) {
        const std::size_t bytes = tcp.read_some(boost::asio::buffer(buffer), error);
        if (error) {
            serverHungUp = error != boost::asio::error::would_block;
            break;
        }
        stream.append(buffer.data(), bytes);
    }
    cut(stream, reliable);
}

void TestClient::steer(const practice::ShipInput& input)
{
    sendDatagram(steeringFrame(qport(), input));
}

void TestClient::sendDatagram(const std::string& bytes)
{
    udp.send_to(boost::asio::buffer(bytes), server);
}

void TestClient::sendStream(const std::string& bytes)
{
    tcp.non_blocking(false);
    boost::asio::write(tcp, boost::asio::buffer(bytes));
    tcp.non_blocking(true);
}

std::vector<Vantor::ObjectInfo> TestClient::infos() const
{
    return messagesOf<Vantor::ObjectInfo>(reliable, MessageTypes::OBJECT_INFO);
}

std::vector<Vantor::ObjectUpdate> TestClient::updates() const
{
    std::vector<Vantor::ObjectUpdate> all;
    for (const std::string& datagram : datagrams) {
        for (const ServerMessage& message : messagesIn(datagram)) {
            all.push_back(message.as<Vantor::ObjectUpdate>());
        }
    }
    return all;
}

Vector3 TestClient::positionOf(std::uint64_t id) const
{
    const auto moves = updates();
    for (auto update = moves.rbegin(); update != moves.rend(); ++update) {
        if (update->id() == id) {
            return vectorOf(update->position());
        }
    }
    for (const Vantor::ObjectInfo& info : infos()) {
        if (info.id() == id) {
            return vectorOf(info.position());
        }
    }
    throw std::runtime_error("nothing is known of that ship");
}
