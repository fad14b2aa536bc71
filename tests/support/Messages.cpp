#include "tests/support/Messages.h"

#include "Common/Protobuf/Object/Object.pb.h"
#include "network/MessageSerializer.h"

namespace support {

namespace {

constexpr unsigned int playerType = 0;
constexpr unsigned int shotType = 1;
constexpr std::size_t headerSize = 5;  // a client's frame: qport, length, type
constexpr unsigned int clientUpdateType = 4;

template <class Message>
void fill(Message& out, Vector3 v)
{
    out.set_x(v.x);
    out.set_y(v.y);
    out.set_z(v.z);
}

// What an ObjectInfo and an ObjectUpdate have in common.
template <class Message>
void fill(Message& out, std::uint64_t id, std::uint32_t time, Vector3 position, Quaternion orientation)
{
    out.set_id(id);
    out.set_timestamp(time);
    fill(*out.mutable_position(), position);
    out.mutable_orientation()->set_w(orientation.w);
    fill(*out.mutable_orientation(), Vector3(orientation.x, orientation.y, orientation.z));
}

unsigned int uint16At(const std::string& bytes, std::size_t offset)
{
    return static_cast<unsigned char>(bytes[offset]) + 256U * static_cast<unsigned char>(bytes[offset + 1]);
}

}  // namespace

std::string welcome(std::uint64_t id, std::uint32_t qport)
{
    Vantor::Welcome message;
    message.set_id(id);
    message.set_qport(qport);
    message.mutable_playerdata()->set_health(100.0F);
    return MessageSerializer::serializeMessage(message);
}

std::string shipInfo(const Ship& ship)
{
    Vantor::ObjectInfo info;
    info.set_objecttype(playerType);
    fill(info, ship.id, ship.time, ship.position, ship.orientation);
    Vantor::PlayerData& data = *info.mutable_playerdata();
    data.set_health(ship.health);
    data.set_blueteam(ship.blueTeam);
    data.set_name(ship.name);
    data.set_score(ship.score);
    data.set_redteamscore(ship.redScore);
    data.set_blueteamscore(ship.blueScore);
    return MessageSerializer::serializeMessage(info);
}

std::string shotInfo(std::uint64_t id, bool blueTeam, Vector3 position, Vector3 velocity)
{
    Vantor::ObjectInfo info;
    info.set_objecttype(shotType);
    fill(info, id, 1000, position, {});
    info.mutable_projectiledata()->set_blueteam(blueTeam);
    fill(*info.mutable_projectiledata()->mutable_velocity(), velocity);
    return MessageSerializer::serializeMessage(info);
}

std::string update(std::uint64_t id, std::uint32_t time, Vector3 position, Quaternion orientation)
{
    Vantor::ObjectUpdate message;
    fill(message, id, time, position, orientation);
    return MessageSerializer::serializeMessage(message);
}

std::string destroy(std::uint64_t id)
{
    Vantor::ObjectDestroy message;
    message.set_id(id);
    return MessageSerializer::serializeMessage(message);
}

std::string frame(unsigned char type, const std::string& body)
{
    const std::size_t length = body.size() + 1;
    const std::string head = {static_cast<char>(length & 0xFFU), static_cast<char>(length >> 8U & 0xFFU),
                              static_cast<char>(type)};
    return head + body;
}

std::optional<Steering> parseSteering(const std::string& datagram)
{
    if (datagram.size() < headerSize || uint16At(datagram, 2) + 4 != datagram.size() ||
        datagram[4] != static_cast<char>(clientUpdateType)) {
        return std::nullopt;
    }
    Vantor::ClientUpdate message;
    const std::string body = datagram.substr(headerSize);
    if (!message.ParseFromString(body) || message.SerializeAsString() != body) {
        return std::nullopt;
    }
    const Vantor::Orientation& q = message.orientation();
    return Steering{static_cast<std::uint16_t>(uint16At(datagram, 0)), message.boosterson(),
                    Quaternion(q.w(), q.x(), q.y(), q.z())};
}

}  // namespace support
