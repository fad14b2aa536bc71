#pragma once

#include "bench/FrameProbe.h"
#include "scene/Transform.h"

#include <array>
#include <cstddef>

/// How smoothly the ships of others are drawn: every drawn position and every server state behind it, as they
/// happened, and once more with the same states and frames that come exactly every 17 ms.
///
/// A step from one frame to the next is too long by what exceeds the way that the ship makes in the time
/// between the frames at its own speed, the faster of the two newest measured ones. What is too long in even
/// frames as well comes from the blending rule of scene/NetworkedMotion, not from the frames.
namespace motion_probe {

/// What came for the ship in a frame, the first of these that applies.
enum Cause
{
    fullState,  ///< a state that is to be shown at once, as when a ship is hit
    snap,       ///< a state too far from where the ship was shown
    newState,   ///< another state: a new blend begins, which is drawn from the next frame on
    flight,     ///< none: blend or extrapolation goes on
    causeCount
};
constexpr const char* causeNames[causeCount] = {"a full state", "a snap", "a new state", "no state"};

/// World units by which steps were too long.
struct Excess
{
    std::size_t steps = 0;
    float largest = 0;
    float usual = 0;  ///< 99 of 100 steps are too long by no more
};

struct Report
{
    std::array<Excess, causeCount> shown;       ///< for the time that passed before the eye
    std::array<Excess, causeCount> moved;       ///< for the time by which the scene was moved
    std::array<Excess, causeCount> evenFrames;  ///< for the same states in even frames
    std::size_t flights = 0;                    ///< from a ship's appearance to its end
};

/// Before `ship` takes a state of the server.
void noteState(const Transform& ship, unsigned int serverTime, Vector3 position, bool full);
/// After each frame: notes where every ship but `ownId` was drawn, at the time `shown`.
void sample(unsigned long long ownId, frame_probe::Clock::time_point shown);
/// Of the steps after `from`.
Report report(frame_probe::Clock::time_point from);

}  // namespace motion_probe
