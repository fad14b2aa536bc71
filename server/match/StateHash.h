#pragma once

#include "server/match/Shot.h"

#include <cstdint>
#include <cstring>

namespace practice {

/// FNV-1a over the bits of what is added; tells apart floats that compare equal, such as 0 and -0.
class StateHash
{
public:
    template <typename Integer>
    void add(Integer value)
    {
        for (std::size_t i = 0; i < sizeof value; ++i) {
            state = (state ^ (static_cast<std::uint64_t>(value) >> (8 * i) & 0xFFU)) * 0x100000001B3U;
        }
    }
    void add(float value)
    {
        std::uint32_t bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        add(bits);
    }
    void add(const Vector3& v)
    {
        add(v.x);
        add(v.y);
        add(v.z);
    }
    void add(const Quaternion& q)
    {
        add(q.w);
        add(q.x);
        add(q.y);
        add(q.z);
    }
    void add(const Ship& ship);
    void add(const Shot& shot);

    std::uint64_t value() const { return state; }

private:
    std::uint64_t state = 0xCBF29CE484222325U;
};

inline void StateHash::add(const Ship& ship)
{
    add(ship.id);
    add(static_cast<std::uint8_t>(ship.team));
    add(static_cast<std::uint8_t>(ship.alive));
    add(ship.position);
    add(ship.velocity);
    add(ship.orientation);
    add(ship.health);
    add(ship.score);
    add(ship.reload);
    add(ship.deaths);
    add(ship.respawnIn);
    add(ship.sinceSpawn);
}

inline void StateHash::add(const Shot& shot)
{
    add(shot.id);
    add(shot.position);
    add(shot.velocity);
    add(shot.age);
}

}  // namespace practice
