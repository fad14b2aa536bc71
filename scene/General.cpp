#include "scene/General.h"

#include "math/SaturatingTruncation.h"
#include "scene/SceneGraph.h"

#include <cmath>
#include <cstdlib>
#include <ctime>

General* General::instance = nullptr;

namespace {

constexpr float stepsPerUnit = 100.0F;  ///< random points lie on a grid of this fineness

int truncated(float value)
{
    return saturatingTruncation(static_cast<double>(value));
}

int nextOdd(int n)
{
    return n % 2 == 0 ? n + 1 : n;
}

float randomCoordinate(float centre, float size)
{
    const int steps = truncated(size * stepsPerUnit);
    const int drawn = std::rand();  // also for a side too short for a step: the other axes draw as always
    const int step = steps == 0 ? 0 : drawn % steps;
    return centre - (static_cast<float>(step) + size * stepsPerUnit * -0.5F) / stepsPerUnit;
}

std::size_t numberOfPlayers()
{
    const auto* players = SceneGraph::getInstance()->getListOfType(SGT_PLAYER);
    return players == nullptr ? 0 : players->size();
}

}  // namespace

General* General::getInstance()
{
    if (instance == nullptr) {
        instance = new General;
    }
    return instance;
}

Vector3 General::blueStart()
{
    return startOf(blueBase, blueSlot);
}

Vector3 General::redStart()
{
    return startOf(redBase, redSlot);
}

Vector3 General::startOf(Vector3 fixedPoint, std::int32_t& slot)
{
    switch (mode) {
        case RANDOM:
            return getStartingPointWithin(fixedPoint, teamBox, true, 0);
        case GRID:
            slot += 2;
            return getStartingPointWithin(gridCentre, gridBox, false, slot);
        default:
            return fixedPoint;
    }
}

Vector3 General::getStartingPointWithin(Vector3 centre, Vector3 size, bool random, int seed)
{
    if (!random) {
        return gridPoint(centre, size, seed, numberOfPlayers());
    }
    seedGenerator(seed);
    const float x = randomCoordinate(centre.x, size.x);
    const float y = randomCoordinate(centre.y, size.y);
    const float z = randomCoordinate(centre.z, size.z);
    return {x, y, z};
}

Vector3 General::gridPoint(Vector3 centre, Vector3 size, int slot, std::size_t players)
{
    const float q = static_cast<float>(players) / (size.y / size.x) / (size.z / size.x);
    constexpr double third = 0.3333333432674408;  // the float nearest to one third
    return gridCell(centre, size, slot, saturatingTruncation(std::pow(static_cast<double>(q), third)));
}

Vector3 General::gridCell(Vector3 centre, Vector3 size, int slot, int n)
{
    const int proportionalLayers = truncated(static_cast<float>(n) * size.z / size.x);
    const int layers = proportionalLayers == 0 ? 1 : proportionalLayers;
    const int columns = nextOdd(n);
    const int rows = nextOdd(truncated(static_cast<float>(n) * size.y / size.x));

    const std::int64_t cellsPerLayer = static_cast<std::int64_t>(rows) * columns;
    const std::int64_t index = slot % (cellsPerLayer * layers);
    const std::int64_t k = index / cellsPerLayer;
    const std::int64_t rest = index % cellsPerLayer;
    const std::int64_t j = rest / columns;
    const std::int64_t i = rest % columns;
    const auto along = [](float c, float s, int count, std::int64_t cell) {
        return c + (s / static_cast<float>(count) * static_cast<float>(cell) - s * 0.5F);
    };
    return {along(centre.x, size.x, columns, i), along(centre.y, size.y, rows, j),
            along(centre.z, size.z, layers, k)};
}

void General::seedGenerator(int seed)
{
    if (seed != 0) {
        std::srand(static_cast<unsigned int>(seed));
    } else if (!seeded) {
        std::srand(static_cast<unsigned int>(std::time(nullptr)));
        seeded = true;
    }
}
