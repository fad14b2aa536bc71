#pragma once

#include "math/Quaternion.h"
#include "math/Vector3.h"

#include <cstdint>
#include <optional>
#include <string>

namespace framing {
struct ClientFrame;
}

namespace Vantor {
class Orientation;
class Position;
}  // namespace Vantor

/// The protocol's messages as plain values: turns values into whole frames, and messages into values.
///
/// Positions are in world units, orientations are unit quaternions, times are milliseconds of the server's
/// clock (32 bits, wrapping). Stateless; any thread. Values that are read are not checked: any float may be
/// NaN or infinite.
namespace messages {

Vector3 toVector3(const Vantor::Position& position);
Quaternion toQuaternion(const Vantor::Orientation& orientation);
void set(Vantor::Position& position, const Vector3& v);
void set(Vantor::Orientation& orientation, const Quaternion& q);

/// A ship and its player, as an ObjectInfo or a Welcome describes them.
struct ShipState
{
    std::uint64_t id = 0;
    bool blueTeam = false;
    Vector3 position = {};
    Quaternion orientation = {};
    float health = 100.0F;  ///< hit points
    std::string name = "Pilot";
    std::int32_t score = 0;     ///< the player's own
    std::int32_t redScore = 0;  ///< the team's, as the next
    std::int32_t blueScore = 0;
    std::uint32_t time = 1000;  ///< milliseconds
};

struct ShotState
{
    std::uint64_t id = 0;
    bool blueTeam = false;
    Vector3 position = {};
    Vector3 velocity = {};      ///< units a second
    std::uint32_t time = 1000;  ///< milliseconds
};

/// A player's input.
struct Steering
{
    Quaternion orientation = {};
    std::uint32_t controls = 0;  ///< a bit for each pressed key (GUIClient/VTEntryPoint.cpp)
};

// Frames of a server.
/// A client uses only the low 16 bits of `qport`.
std::string welcomeFrame(const ShipState& ship, std::uint32_t qport);
std::string infoFrame(const ShipState& ship);
std::string infoFrame(const ShotState& shot);
std::string updateFrame(std::uint64_t id, std::uint32_t time, const Vector3& position,
                        const Quaternion& orientation = {});
std::string destroyFrame(std::uint64_t id);

// The frame of a client.
std::string steeringFrame(std::uint16_t qport, const Steering& steering);
/// Returns nothing if the frame is no ClientUpdate or its body does not parse.
std::optional<Steering> readSteering(const framing::ClientFrame& frame);

}  // namespace messages
