#pragma once

#include "math/Quaternion.h"
#include "math/Vector3.h"

#include <cstdint>
#include <optional>
#include <string>

namespace support {

/// A ship as a server announces it; every field can be changed before it is sent.
struct Ship
{
    std::uint64_t id = 0;
    bool blueTeam = false;
    Vector3 position;
    Quaternion orientation;
    float health = 100.0F;
    std::string name = "Rosa";
    std::int32_t score = 0;
    std::int32_t redScore = 0;
    std::int32_t blueScore = 0;
    std::uint32_t time = 1000;  ///< milliseconds of the server's clock
};

// Each of these is one frame, ready to be sent.
std::string welcome(std::uint64_t id, std::uint32_t qport);
std::string shipInfo(const Ship& ship);
std::string shotInfo(std::uint64_t id, bool blueTeam, Vector3 position, Vector3 velocity = {});
std::string update(std::uint64_t id, std::uint32_t time, Vector3 position, Quaternion orientation = {});
std::string destroy(std::uint64_t id);
/// Whatever the type and the body are; the length is right.
std::string frame(unsigned char type, const std::string& body);

/// A client's datagram, taken apart.
struct Steering
{
    std::uint16_t qport = 0;
    std::uint32_t boosters = 0;
    Quaternion orientation;
};

/// Nothing where the datagram is not exactly a qport and one frame that holds a ClientUpdate and no byte
/// more.
std::optional<Steering> parseSteering(const std::string& datagram);

}  // namespace support
