#include "network/Messages.h"

#include "Common/Protobuf/Object/Object.pb.h"
#include "network/Framing.h"
#include "network/MessageSerializer.h"

namespace messages {

namespace {

// Values of SceneGraphType, which belongs to the scene.
constexpr std::uint32_t playerType = 0;
constexpr std::uint32_t projectileType = 1;

void set(Vantor::PlayerData& data, const ShipState& ship)
{
    data.set_health(ship.health);
    data.set_blueteam(ship.blueTeam);
    data.set_name(ship.name);
    data.set_score(ship.score);
    data.set_redteamscore(ship.redScore);
    data.set_blueteamscore(ship.blueScore);
}

}  // namespace

Vector3 toVector3(const Vantor::Position& position)
{
    return {position.x(), position.y(), position.z()};
}

Quaternion toQuaternion(const Vantor::Orientation& orientation)
{
    return {orientation.w(), orientation.x(), orientation.y(), orientation.z()};
}

void set(Vantor::Position& position, const Vector3& v)
{
    position.set_x(v.x);
    position.set_y(v.y);
    position.set_z(v.z);
}

void set(Vantor::Orientation& orientation, const Quaternion& q)
{
    orientation.set_x(q.x);
    orientation.set_y(q.y);
    orientation.set_z(q.z);
    orientation.set_w(q.w);
}

std::string welcomeFrame(const ShipState& ship, std::uint32_t qport)
{
    Vantor::Welcome welcome;
    welcome.set_id(ship.id);
    welcome.set_qport(qport);
    set(*welcome.mutable_playerdata(), ship);
    return MessageSerializer::serializeMessage(welcome);
}

std::string infoFrame(const ShipState& ship)
{
    Vantor::ObjectInfo info;
    info.set_id(ship.id);
    info.set_objecttype(playerType);
    info.set_timestamp(ship.time);
    set(*info.mutable_position(), ship.position);
    set(*info.mutable_orientation(), ship.orientation);
    set(*info.mutable_playerdata(), ship);
    return MessageSerializer::serializeMessage(info);
}

std::string infoFrame(const ShotState& shot)
{
    Vantor::ObjectInfo info;
    info.set_id(shot.id);
    info.set_objecttype(projectileType);
    info.set_timestamp(shot.time);
    set(*info.mutable_position(), shot.position);
    set(*info.mutable_orientation(), Quaternion());
    set(*info.mutable_projectiledata()->mutable_velocity(), shot.velocity);
    info.mutable_projectiledata()->set_blueteam(shot.blueTeam);
    return MessageSerializer::serializeMessage(info);
}

std::string updateFrame(std::uint64_t id, std::uint32_t time, const Vector3& position,
                        const Quaternion& orientation)
{
    Vantor::ObjectUpdate update;
    update.set_id(id);
    update.set_timestamp(time);
    set(*update.mutable_position(), position);
    set(*update.mutable_orientation(), orientation);
    return MessageSerializer::serializeMessage(update);
}

std::string destroyFrame(std::uint64_t id)
{
    Vantor::ObjectDestroy destroy;
    destroy.set_id(id);
    return MessageSerializer::serializeMessage(destroy);
}

std::string steeringFrame(std::uint16_t qport, const Steering& steering)
{
    Vantor::ClientUpdate update;
    set(*update.mutable_orientation(), steering.orientation);
    update.set_boosterson(steering.controls);
    std::string frame;
    framing::appendClientFrame(frame, qport, MessageTypes::CLIENT_UPDATE, update);
    return frame;
}

std::optional<Steering> readSteering(const framing::ClientFrame& frame)
{
    Vantor::ClientUpdate update;
    if (frame.type != MessageTypes::CLIENT_UPDATE ||
        !framing::parseBody(update, frame.body, frame.bodySize)) {
        return std::nullopt;
    }
    return Steering{toQuaternion(update.orientation()), update.boosterson()};
}

}  // namespace messages
