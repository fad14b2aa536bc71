// Half of all objects leave in one frame: queued one by one, then applied.
#include "bench/Fleet.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <random>

namespace {

std::vector<Player*> everySecond(const Fleet& fleet)
{
    std::vector<Player*> doomed;
    for (std::size_t i = 0; i < fleet.ships.size(); i += 2) {
        doomed.push_back(fleet.ships[i]);
    }
    return doomed;
}

void removal(benchmark::State& state, bool shuffled)
{
    const auto size = static_cast<std::size_t>(state.range(0));
    std::mt19937 generator(7);
    while (state.KeepRunning()) {
        const Fleet fleet(size);
        std::vector<Player*> doomed = everySecond(fleet);
        if (shuffled) {
            std::shuffle(doomed.begin(), doomed.end(), generator);
        }
        const auto start = std::chrono::steady_clock::now();
        for (Player* ship : doomed) {
            fleet.scene->addToRemoveList(ship);
        }
        fleet.scene->applyRemoveList();
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        if (fleet.scene->children.size() != size - doomed.size()) {
            state.SkipWithError("the wrong number of ships is left");
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0) / 2);
}

void sizes(benchmark::internal::Benchmark* b)
{
    b->RangeMultiplier(10)->Range(1000, 100000)->UseManualTime();
}

BENCHMARK_CAPTURE(removal, in_order, false)->Apply(sizes);
BENCHMARK_CAPTURE(removal, shuffled, true)->Apply(sizes);

}  // namespace
