#pragma once

#include "network/Messages.h"
#include "peer/ScriptedServer.h"

#include <limits>
#include <string>
#include <utility>
#include <vector>

/// What a broken or malicious server may send: attacks by name, of one entry per frame of the game.
///
/// Most aim at ship 5 and shot 6 and at the carriers, whose id is 0.
namespace attacks {

using Frames = std::vector<std::string>;
using messages::destroyFrame;
using messages::updateFrame;
using Limits = std::numeric_limits<float>;

constexpr std::uint64_t lastId = std::numeric_limits<std::uint64_t>::max();

inline std::string ship(std::uint64_t id, const std::string& name = "Rosa", float v = 0)
{
    return messages::infoFrame(
        messages::ShipState{id, false, {v, -v, v}, {v, v, v, v}, v, name, 0, 0, 0, 1000});
}

inline std::string shot(std::uint64_t id, Vector3 position = {1, 2, 3}, Vector3 velocity = {4, 5, 6})
{
    return messages::infoFrame(messages::ShotState{id, true, position, velocity});
}

inline Frames oddNumbers()
{
    Frames frames = {peer::rawFrame(2, "\x08\x05\x10\x01")};  // an update without a pose
    for (const float v : {0.0F, Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), Limits::max(),
                          1e30F, Limits::denorm_min()}) {
        frames.push_back(ship(5, "Rosa", v) + shot(6, {v, v, v}, {v, v, v}));
        frames.push_back(updateFrame(5, 1100, {v, v, v}, {v, v, v, v}) + ship(0, "Rosa", v));
        frames.push_back(updateFrame(5, 1101, {}) + updateFrame(6, 1100, {-v, v, 0}, {v, 0, 0, 0}) +
                         destroyFrame(6));
    }
    return frames;
}

// Times that repeat, run backwards and wrap. Each state lies 20 units further on, which snaps; then one close
// to it, which does not.
inline Frames oddTimes()
{
    Frames frames = {ship(5)};
    for (const std::uint32_t time :
         {1000U, 1000U, 5000U, 4999U, 0U, 4294967295U, 1U, 4294967295U, 2147483648U, 2147483647U}) {
        const float x = 20.0F * static_cast<float>(frames.size());
        frames.push_back(updateFrame(5, time, {x, 0, 0}) + updateFrame(5, time, {x + 1, 0, 0}, {0, 0, 0, 0}));
    }
    return frames;
}

const std::pair<const char*, Frames> all[] = {
    {"a carrier as a player",
     {ship(0, std::string(60000, 'n')) + messages::welcomeFrame({0}, 1), destroyFrame(0),
      ship(0) + updateFrame(0, 1, {Limits::infinity(), 0, 0}), destroyFrame(0) + ship(0) + destroyFrame(0)}},
    {"long and odd names, on the own ship",
     {messages::welcomeFrame({5}, 1) + ship(5, std::string(60000, 'n')), ship(5, ""), ship(5, "%s%n%500000d"),
      ship(5, std::string("a\0b", 3)), ship(5, "\xFF\xFE\x80\x07"), destroyFrame(5)}},
    {"bad frames",
     {peer::rawFrame(1, std::string(60000, '\xEE')) + peer::rawFrame(0, "body") + peer::rawFrame(255, "")}},
    {"odd numbers", oddNumbers()},
    {"odd times", oddTimes()},
    {"ids beyond the signed numbers",
     {ship(lastId / 2 + 1), ship(lastId), updateFrame(lastId, 1, {9, 9, 9}), destroyFrame(lastId / 2 + 1),
      shot(lastId - 1), destroyFrame(lastId - 1), destroyFrame(lastId)}},
    {"ids that our own explosions take",
     {ship(2) + ship(3) + shot(4) + shot(9), destroyFrame(9) + shot(9), destroyFrame(4), ship(2) + ship(3),
      updateFrame(2, 1100, {1, 1, 1}), destroyFrame(2) + destroyFrame(3), ship(4),
      destroyFrame(2) + destroyFrame(4) + destroyFrame(5)}},
    {"destroyed twice, announced at once again, and under two types",
     {shot(9) + destroyFrame(9) + destroyFrame(9), destroyFrame(9) + shot(9) + destroyFrame(9), ship(5),
      destroyFrame(5) + ship(5), ship(5), destroyFrame(5) + shot(5) + updateFrame(5, 3, {}), ship(9), shot(9),
      destroyFrame(9), ship(9)}}};

}  // namespace attacks
