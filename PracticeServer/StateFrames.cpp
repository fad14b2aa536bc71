#include "PracticeServer/StateFrames.h"

#include "Common/Protobuf/Object/Object.pb.h"
#include "network/MessageSerializer.h"

namespace practice {

namespace {

constexpr std::uint32_t playerType = 0;
constexpr std::uint32_t projectileType = 1;

void fill(Vantor::Position& message, const Vector3& v)
{
    message.set_x(v.x);
    message.set_y(v.y);
    message.set_z(v.z);
}

void fill(Vantor::Orientation& message, const Quaternion& q)
{
    message.set_x(q.x);
    message.set_y(q.y);
    message.set_z(q.z);
    message.set_w(q.w);
}

void fill(Vantor::PlayerData& message, const Ship& ship, const Match& match)
{
    message.set_health(ship.health);
    message.set_blueteam(ship.team == Team::blue);
    message.set_name(ship.name);
    message.set_score(ship.score);
    message.set_redteamscore(match.teamScore(Team::red));
    message.set_blueteamscore(match.teamScore(Team::blue));
}

}  // namespace

std::string shipInfoFrame(const Ship& ship, const Match& match)
{
    Vantor::ObjectInfo info;
    info.set_id(ship.id);
    info.set_objecttype(playerType);
    info.set_timestamp(match.timestamp());
    fill(*info.mutable_position(), ship.position);
    fill(*info.mutable_orientation(), ship.orientation);
    fill(*info.mutable_playerdata(), ship, match);
    return MessageSerializer::serializeMessage(info);
}

std::string shotInfoFrame(const Shot& shot, std::uint32_t timestamp)
{
    Vantor::ObjectInfo info;
    info.set_id(shot.id);
    info.set_objecttype(projectileType);
    info.set_timestamp(timestamp);
    fill(*info.mutable_position(), shot.position);
    fill(*info.mutable_orientation(), Quaternion());
    fill(*info.mutable_projectiledata()->mutable_velocity(), shot.velocity);
    info.mutable_projectiledata()->set_blueteam(shot.team == Team::blue);
    return MessageSerializer::serializeMessage(info);
}

std::string shipUpdateFrame(const Ship& ship, std::uint32_t timestamp)
{
    Vantor::ObjectUpdate update;
    update.set_id(ship.id);
    update.set_timestamp(timestamp);
    fill(*update.mutable_position(), ship.position);
    fill(*update.mutable_orientation(), ship.orientation);
    return MessageSerializer::serializeMessage(update);
}

std::string destroyFrame(ObjectId id)
{
    Vantor::ObjectDestroy destroy;
    destroy.set_id(id);
    return MessageSerializer::serializeMessage(destroy);
}

std::string welcomeFrame(const Ship& ship, std::uint16_t qport, const Match& match)
{
    Vantor::Welcome welcome;
    welcome.set_id(ship.id);
    welcome.set_qport(qport);
    fill(*welcome.mutable_playerdata(), ship, match);
    return MessageSerializer::serializeMessage(welcome);
}

}  // namespace practice
