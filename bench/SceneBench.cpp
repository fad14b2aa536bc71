// The scene's own work: the update of a frame, and the removal of half of all objects in one frame.
#include "bench/Fleet.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <random>

namespace {

void update(benchmark::State& state)
{
    Fleet fleet(static_cast<std::size_t>(state.range(0)));
    while (state.KeepRunning()) {
        fleet.scene->update(1.0F / 60.0F);
    }
}

std::vector<Player*> everySecond(const Fleet& fleet)
{
    std::vector<Player*> removed;
    for (std::size_t i = 0; i < fleet.ships.size(); i += 2) {
        removed.push_back(fleet.ships[i]);
    }
    return removed;
}

void removal(benchmark::State& state, bool shuffled)
{
    const auto size = static_cast<std::size_t>(state.range(0));
    std::mt19937 generator(7);
    while (state.KeepRunning()) {
        const Fleet fleet(size);
        std::vector<Player*> removed = everySecond(fleet);
        if (shuffled) {
            std::shuffle(removed.begin(), removed.end(), generator);
        }
        const auto start = std::chrono::steady_clock::now();
        for (Player* ship : removed) {
            fleet.scene->addToRemoveList(ship);
        }
        fleet.scene->applyRemoveList();
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        if (fleet.scene->children.size() != size - removed.size()) {
            state.SkipWithError("the wrong number of ships is left");
        }
    }
}

BENCHMARK(update)->RangeMultiplier(10)->Range(100, 100000);
BENCHMARK_CAPTURE(removal, in_order, false)->RangeMultiplier(10)->Range(1000, 100000)->UseManualTime();
BENCHMARK_CAPTURE(removal, shuffled, true)->RangeMultiplier(10)->Range(1000, 100000)->UseManualTime();

}  // namespace
