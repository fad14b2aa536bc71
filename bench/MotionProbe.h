#pragma once

#include "bench/FrameProbe.h"
#include "scene/Transform.h"

#include <array>
#include <cstddef>

/// How smoothly the ships of others are drawn: every drawn position and every server state behind it, as they
/// happened, and once more with the same states and frames that come exactly every 17 ms.
///
/// A step from one frame to the next is compared with the way that the ship makes in the time between the
/// frames at its own velocity: the two newest measured ones at its beginning and the two at its end, of which
/// the best counts. What is amiss in even frames as well comes from the blending rule of
/// scene/NetworkedMotion, not from the frames.
namespace motion_probe {

/// What a drawn step is the first to show, the first of these that applies.
enum Cause
{
    fullState,  ///< a state that is shown at once, as when a ship is hit
    snap,       ///< a state too far from where the ship was shown
    newState,   ///< another state: the first step of a new blend
    flight,     ///< none: blend or extrapolation goes on
    causeCount
};
constexpr const char* causeNames[causeCount] = {"a full state", "a snap", "a new state", "no state"};

/// How steps are compared.
enum Measure
{
    tooLong,  ///< by how much the step is longer than the way at the fastest of these speeds
    astray,   ///< how far from its end the way at the nearest of these velocities would have led; sees jumps
              ///< backwards and sideways as well
    measureCount
};
constexpr const char* measureNames[measureCount] = {"too long by", "astray by"};

/// By which clock.
enum Pace
{
    shown,       ///< the time that passed before the eye
    moved,       ///< the time by which the scene was moved
    evenFrames,  ///< the same states once more, in even frames
    paceCount
};

/// World units.
struct Amiss
{
    std::size_t steps = 0;
    float largest = 0;
    float usual = 0;  ///< 99 of 100 steps are amiss by no more
};

struct Report
{
    std::array<std::array<std::array<Amiss, paceCount>, causeCount>, measureCount> amiss;
    std::size_t flights = 0;  ///< from a ship's appearance to its end
};

/// Before `ship` takes a state of the server.
void noteState(const Transform& ship, unsigned int serverTime, Vector3 position, bool full);
/// After each frame: notes where every ship but `ownId` was drawn, at the time `shown`.
void sample(unsigned long long ownId, frame_probe::Clock::time_point shown);
/// Of the steps after `from`.
Report report(frame_probe::Clock::time_point from);

}  // namespace motion_probe
