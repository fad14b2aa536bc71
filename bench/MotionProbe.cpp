#include "bench/MotionProbe.h"

#include "scene/SceneGraph.h"

#include <algorithm>
#include <limits>
#include <map>
#include <utility>
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
    std::array<Vector3, 2> velocities;  ///< the two newest measured ones
    Cause cause;                        ///< of the step that ends here
};

// What the samples to come are the first to show.
class Causes
{
public:
    // Before the ship takes a state. A player is drawn where the frame before has moved it, so what moves it
    // only with the frame is shown by the sample after the next.
    void note(const Transform& ship, Vector3 position, bool full)
    {
        if (full) {
            atNext = fullState;
        } else if (ship.smoothPosition.distance(position) > Transform::snapDistance) {
            atNext = std::min(atNext, snap);
        } else {
            afterNext = newState;
        }
    }

    Cause takeNext() { return std::exchange(atNext, std::exchange(afterNext, flight)); }

private:
    Cause atNext = flight;
    Cause afterNext = flight;
};

struct Flight
{
    std::vector<State> states;
    std::vector<Sample> samples;
    Causes causes;
};

std::map<unsigned long long, Flight> current;
std::vector<Flight> finished;

double secondsOf(Clock::time_point time)
{
    return Seconds(time.time_since_epoch()).count();
}

std::array<Vector3, 2> velocitiesOf(const Transform& ship)
{
    return {ship.velocity[0], ship.velocity[1]};
}

// What is known of the steps of all flights, by one clock.
class Steps
{
public:
    // Those of one flight that begin after `from`, each over the seconds that `time` tells.
    template <class Time>
    void add(const std::vector<Sample>& samples, double from, Time time)
    {
        for (std::size_t i = 1; i < samples.size(); ++i) {
            if (samples[i - 1].time > from) {
                add(samples[i - 1], samples[i], static_cast<float>(time(samples[i - 1], samples[i])));
            }
        }
    }

    Amiss summary(Measure measure, Cause cause) const
    {
        std::vector<float> amounts = amiss[measure][cause];
        if (amounts.empty()) {
            return {};
        }
        std::sort(amounts.begin(), amounts.end());
        return {amounts.size(), amounts.back(), amounts[(amounts.size() - 1) * 99 / 100]};
    }

private:
    void add(const Sample& before, const Sample& now, float time)
    {
        const Vector3 step = now.position - before.position;
        float fastest = 0;
        float nearest = std::numeric_limits<float>::infinity();
        for (const Sample* sample : {&before, &now}) {
            for (const Vector3& velocity : sample->velocities) {
                fastest = std::max(fastest, velocity.length());
                nearest = std::min(nearest, step.distance(velocity * time));
            }
        }
        amiss[tooLong][now.cause].push_back(step.length() - fastest * time);
        amiss[astray][now.cause].push_back(nearest);
    }

    std::array<std::array<std::vector<float>, causeCount>, measureCount> amiss;
};

// The same states, each in the first even frame after it came; the ship is drawn as Player does, at the
// position of the frame before.
std::vector<Sample> replay(const Flight& original)
{
    Transform ship(0ULL);
    Causes causes;
    std::vector<Sample> samples;
    auto state = original.states.begin();
    for (double time = state->time; time < original.samples.back().time; time += evenInterval) {
        for (; state != original.states.end() && state->time <= time; ++state) {
            Vector3 position = state->position;
            Quaternion orientation;
            causes.note(ship, position, state->full);
            ship.updateInfo(state->serverTime, position, orientation, state->full);
        }
        samples.push_back({time, evenInterval, ship.smoothPosition, velocitiesOf(ship), causes.takeNext()});
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

}  // namespace

void noteState(const Transform& ship, unsigned int serverTime, Vector3 position, bool full)
{
    Flight& f = current[ship.id];
    f.states.push_back({secondsOf(frame_probe::frames().back().begin), serverTime, position, full});
    f.causes.note(ship, position, full);
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
        f.samples.push_back({time, moved, ship->position, velocitiesOf(*ship), f.causes.takeNext()});
    }
    current.erase(ownId);
    finishFlightsBefore(time);
}

Report report(Clock::time_point from)
{
    finishFlightsBefore(std::numeric_limits<double>::infinity());
    std::array<Steps, paceCount> steps;
    const double begin = secondsOf(from);
    const auto passed = [](const Sample& before, const Sample& now) { return now.time - before.time; };
    for (const Flight& f : finished) {
        steps[shown].add(f.samples, begin, passed);
        steps[moved].add(f.samples, begin, [](const Sample&, const Sample& now) { return now.moved; });
        steps[evenFrames].add(replay(f), begin, passed);
    }
    Report result;
    result.flights = finished.size();
    for (const Measure measure : {tooLong, astray}) {
        for (const Cause cause : {fullState, snap, newState, flight}) {
            for (const Pace pace : {shown, moved, evenFrames}) {
                result.amiss[measure][cause][pace] = steps[pace].summary(measure, cause);
            }
        }
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
