// One update of the whole scene, against the same arithmetic over one array of plain structs.
#include "bench/Fleet.h"
#include "math/SaturatingTruncation.h"

#include <benchmark/benchmark.h>

#include <chrono>

namespace {

constexpr float frameTime = 1.0F / 60.0F;
constexpr int framesPerServerInterval = 3;

// What a ship's update reads and writes, and nothing else.
struct PlainShip
{
    explicit PlainShip(const Player& ship)
        : position(ship.position),
          orientation(ship.orientation),
          currentVelocity(ship.currentVelocity),
          acceleration(ship.acceleration),
          smoothPosition(ship.smoothPosition),
          correction(ship.correction),
          blendStart(ship.blendStart),
          timeSinceUpdate(ship.timeSinceUpdate),
          smoothOrientation(ship.smoothOrientation),
          serverOrientation(ship.serverOrientation[0]),
          angularStep(ship.angularStep),
          serverInterval(ship.serverTime[0] - ship.serverTime[1])
    {
    }

    // Winds `ship` back to what this one remembers.
    void restore(Player& ship) const
    {
        ship.currentVelocity = currentVelocity;
        ship.smoothPosition = smoothPosition;
        ship.timeSinceUpdate = timeSinceUpdate;
        ship.smoothOrientation = smoothOrientation;
    }

    void update(float dt)
    {
        const float interval = static_cast<float>(serverInterval) * 0.001F;
        const int steps = interval == 0.0F ? 0 : saturatingTruncation(static_cast<double>(dt / interval));
        const Quaternion target = angularStep.exponentiation(steps) * serverOrientation;
        smoothOrientation = Quaternion::Slerp(smoothOrientation, target, dt * 15.0F);
        position = smoothPosition;
        orientation = smoothOrientation;
        timeSinceUpdate += dt;
        currentVelocity += acceleration * dt;
        if (timeSinceUpdate <= Transform::blendPeriod) {
            const Vector3 goal = blendStart + correction + currentVelocity * Transform::blendPeriod;
            smoothPosition = Vector3::lerp(blendStart, goal, timeSinceUpdate / Transform::blendPeriod);
        } else {
            smoothPosition += currentVelocity * dt;
        }
    }

    Vector3 position;
    Quaternion orientation;
    Vector3 currentVelocity;
    Vector3 acceleration;
    Vector3 smoothPosition;
    Vector3 correction;
    Vector3 blendStart;
    float timeSinceUpdate;
    Quaternion smoothOrientation;
    Quaternion serverOrientation;
    Quaternion angularStep;
    unsigned int serverInterval;  // milliseconds
};

class SceneSubject
{
public:
    explicit SceneSubject(std::size_t size) : fleet(size), start(plain(fleet)) {}

    static std::vector<PlainShip> plain(const Fleet& fleet)
    {
        std::vector<PlainShip> ships;
        for (const Player* ship : fleet.ships) {
            ships.emplace_back(*ship);
        }
        return ships;
    }
    void restore()
    {
        for (std::size_t i = 0; i < start.size(); ++i) {
            start[i].restore(*fleet.ships[i]);
        }
    }
    void update(float dt) { fleet.scene->update(dt); }
    Vector3 positionOf(std::size_t i) const { return fleet.ships[i]->position; }
    Quaternion orientationOf(std::size_t i) const { return fleet.ships[i]->orientation; }

private:
    Fleet fleet;
    std::vector<PlainShip> start;
};

class ArraySubject
{
public:
    explicit ArraySubject(std::size_t size) : start(SceneSubject::plain(Fleet(size))), ships(start) {}

    void restore() { ships = start; }
    void update(float dt)
    {
        for (PlainShip& ship : ships) {
            ship.update(dt);
        }
    }
    Vector3 positionOf(std::size_t i) const { return ships[i].position; }
    Quaternion orientationOf(std::size_t i) const { return ships[i].orientation; }

private:
    std::vector<PlainShip> start;
    std::vector<PlainShip> ships;
};

// A comparison of two different computations would be worth nothing.
bool sameArithmetic()
{
    constexpr std::size_t size = 100;
    SceneSubject scene(size);
    ArraySubject array(size);
    for (int frame = 0; frame < 90; ++frame) {
        scene.update(frameTime);
        array.update(frameTime);
        for (std::size_t i = 0; i < size; ++i) {
            if (!(scene.positionOf(i) == array.positionOf(i)) ||
                scene.orientationOf(i) != array.orientationOf(i)) {
                return false;
            }
        }
    }
    return true;
}

// The frames of one server interval, over and over: every ship is in the middle of a turn.
template <class Subject>
void turning(benchmark::State& state)
{
    if (!sameArithmetic()) {
        state.SkipWithError("the scene and the array disagree");
    }
    Subject subject(static_cast<std::size_t>(state.range(0)));
    while (state.KeepRunning()) {
        subject.restore();
        const auto start = std::chrono::steady_clock::now();
        for (int frame = 0; frame < framesPerServerInterval; ++frame) {
            subject.update(frameTime);
        }
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0) * framesPerServerInterval);
}

// A server that fell silent: all turns are complete, the arithmetic is at its cheapest.
template <class Subject>
void coasting(benchmark::State& state)
{
    Subject subject(static_cast<std::size_t>(state.range(0)));
    for (int frame = 0; frame < 90; ++frame) {
        subject.update(frameTime);
    }
    while (state.KeepRunning()) {
        subject.update(frameTime);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void sizes(benchmark::internal::Benchmark* b)
{
    b->RangeMultiplier(10)->Range(100, 100000);
}

BENCHMARK_TEMPLATE(turning, SceneSubject)->Name("update/turning/ours")->Apply(sizes)->UseManualTime();
BENCHMARK_TEMPLATE(turning, ArraySubject)->Name("update/turning/array")->Apply(sizes)->UseManualTime();
BENCHMARK_TEMPLATE(coasting, SceneSubject)->Name("update/coasting/ours")->Apply(sizes);
BENCHMARK_TEMPLATE(coasting, ArraySubject)->Name("update/coasting/array")->Apply(sizes);

}  // namespace
