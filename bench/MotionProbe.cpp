#include "bench/MotionProbe.h"

#include "scene/SceneGraph.h"

#include <algorithm>
#include <limits>
#include <map>
#include <vector>

namespace motion_probe {

namespace {

using frame_probe::Clock;
using frame_probe::Seconds;

constexpr double evenInterval = 0.017;  // seconds; the main loop's pace where nothing delays it

struct State
{
    double time;  ///< of its frame, seconds
    unsigned int serverTime;
    Vector3 position;
    bool full;
};

struct Sample
{
    double time;   ///< when it was shown, seconds
    double moved;  ///< for how long the scene was moved since the last sample, seconds
    Vector3 position;
    float speed;
    Cause cause;
};

struct Flight
{
    std::vector<State> states;
    std::vector<Sample> samples;
    Cause cause = flight;  ///< since the last sample
};

std::map<unsigned long long, Flight> current;
std::vector<Flight> finished;

double secondsOf(Clock::time_point time)
{
    return Seconds(time.time_since_epoch()).count();
}

Cause causeOf(const Transform& ship, Vector3 position, bool full)
{
    if (full) {
        return fullState;
    }
    return ship.smoothPosition.distance(position) > Transform::snapDistance ? snap : newState;
}

float speedOf(const Transform& ship)
{
    return std::max(ship.velocity[0].length(), ship.velocity[1].length());
}

using Excesses = std::array<std::vector<float>, causeCount>;

enum Measure
{
    asShown,
    asMoved
};

void addExcesses(Excesses& excesses, const std::vector<Sample>& samples, double from, Measure measure)
{
    for (std::size_t i = 1; i < samples.size(); ++i) {
        const Sample& before = samples[i - 1];
        const Sample& now = samples[i];
        if (before.time > from) {
            const double time = measure == asShown ? now.time - before.time : now.moved;
            const float way = std::max(before.speed, now.speed) * static_cast<float>(time);
            excesses[now.cause].push_back(now.position.distance(before.position) - way);
        }
    }
}

// The same states, each in the first even frame after it came; the ship is drawn as Player does, at the
// position of the frame before.
std::vector<Sample> replay(const Flight& original)
{
    Transform ship(0ULL);
    std::vector<Sample> samples;
    auto state = original.states.begin();
    for (double time = state->time; time < original.samples.back().time; time += evenInterval) {
        Cause cause = flight;
        for (; state != original.states.end() && state->time <= time; ++state) {
            Vector3 position = state->position;
            Quaternion orientation;
            cause = std::min(cause, causeOf(ship, position, state->full));
            ship.updateInfo(state->serverTime, position, orientation, state->full);
        }
        samples.push_back({time, evenInterval, ship.smoothPosition, speedOf(ship), cause});
        ship.realUpdate(static_cast<float>(evenInterval));
    }
    return samples;
}

// A player is drawn where the frame before has moved it.
double secondsMovedBefore()
{
    const auto& frames = frame_probe::frames();
    const auto updated = [](const frame_probe::Frame& frame) {
        return frame.begin + std::chrono::duration_cast<Clock::duration>(frame.steps[frame_probe::input] +
                                                                         frame.steps[frame_probe::dispatch]);
    };
    const std::size_t last = frames.size() - 1;
    return last < 2 ? 0.0 : Seconds(updated(frames[last - 1]) - updated(frames[last - 2])).count();
}

// Those that no frame has shown at `time` or later.
void finishFlightsBefore(double time)
{
    for (auto entry = current.begin(); entry != current.end();) {
        Flight& f = entry->second;
        const bool hasEnded = f.samples.empty() || f.samples.back().time < time;
        if (hasEnded && !f.states.empty() && !f.samples.empty()) {
            finished.push_back(std::move(f));
        }
        entry = hasEnded ? current.erase(entry) : std::next(entry);
    }
}

Excess summary(std::vector<float> steps)
{
    if (steps.empty()) {
        return {};
    }
    std::sort(steps.begin(), steps.end());
    return {steps.size(), steps.back(), steps[(steps.size() - 1) * 99 / 100]};
}

}  // namespace

void noteState(const Transform& ship, unsigned int serverTime, Vector3 position, bool full)
{
    Flight& f = current[ship.id];
    f.states.push_back({secondsOf(frame_probe::frames().back().begin), serverTime, position, full});
    f.cause = std::min(f.cause, causeOf(ship, position, full));
}

void sample(unsigned long long ownId, Clock::time_point shown)
{
    const double time = secondsOf(shown);
    const double moved = secondsMovedBefore();
    const auto* ships = SceneGraph::getInstance()->getListOfType(SGT_PLAYER);
    if (ships == nullptr) {
        return;
    }
    for (const Transform* ship : *ships) {
        Flight& f = current[ship->id];
        f.samples.push_back({time, moved, ship->position, speedOf(*ship), f.cause});
        f.cause = flight;
    }
    current.erase(ownId);
    finishFlightsBefore(time);
}

Report report(Clock::time_point from)
{
    finishFlightsBefore(std::numeric_limits<double>::infinity());
    Excesses shown, moved, even;
    for (const Flight& f : finished) {
        addExcesses(shown, f.samples, secondsOf(from), asShown);
        addExcesses(moved, f.samples, secondsOf(from), asMoved);
        addExcesses(even, replay(f), secondsOf(from), asShown);
    }
    Report result;
    result.flights = finished.size();
    for (std::size_t cause = 0; cause < causeCount; ++cause) {
        result.shown[cause] = summary(shown[cause]);
        result.moved[cause] = summary(moved[cause]);
        result.evenFrames[cause] = summary(even[cause]);
    }
    return result;
}

}  // namespace motion_probe

// Transform::updateInfo as the linker names it; players call it for every state.
extern "C" {

void __real__ZN9Transform10updateInfoEjR7Vector3R10Quaternionb(Transform* ship, unsigned int time,
                                                               Vector3& position, Quaternion& orientation,
                                                               bool reset);

void __wrap__ZN9Transform10updateInfoEjR7Vector3R10Quaternionb(Transform* ship, unsigned int time,
                                                               Vector3& position, Quaternion& orientation,
                                                               bool reset)
{
    if (ship->type == SGT_PLAYER) {
        motion_probe::noteState(*ship, time, position, reset);
    }
    __real__ZN9Transform10updateInfoEjR7Vector3R10Quaternionb(ship, time, position, orientation, reset);
}
}
