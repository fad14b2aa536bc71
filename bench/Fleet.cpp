#include "bench/Fleet.h"

#include "engine/ResourceManager.h"
#include "math/Quaternion.h"
#include "math/Vector3.h"

namespace {

constexpr std::size_t shipsPerRow = 40;
constexpr std::size_t rows = 25;
constexpr unsigned int serverInterval = 50;  // milliseconds

Vector3 gridPosition(std::size_t i)
{
    const std::size_t row = i / shipsPerRow;
    const std::size_t layer = row / rows;
    return {3.0F * (static_cast<float>(i % shipsPerRow) - 19.5F),
            3.5F * (static_cast<float>(row % rows) - 12.0F), -80.0F - 5.0F * static_cast<float>(layer)};
}

void feedStates(Player& ship, std::size_t i)
{
    const Vector3 axis = i % 2 == 0 ? Vector3(0.0F, 1.0F, 0.0F) : Vector3(1.0F, 0.0F, 0.0F);
    Vector3 position = gridPosition(i);
    for (unsigned int state = 0; state < 3; ++state) {
        const auto step = static_cast<float>(state * state);
        Vector3 moved = position + Vector3(0.01F * step, 0.02F * step, 0.0F);
        Quaternion turned = Quaternion::FromAxisAngle(0.3F + 0.2F * static_cast<float>(state + i % 7), axis);
        ship.updateInfo(serverInterval * (state + 1), moved, turned, state == 0);
    }
}

}  // namespace

Fleet::Fleet(std::size_t size) : replaced(SceneGraph::instance)
{
    // Unless the ships' texture is loaded already, it counts as missing. So nothing reads the disk.
    ResourceManager::getInstance()->textures.try_emplace("texture-white.png", 0U);
    scene = std::make_unique<SceneGraph>();
    SceneGraph::instance = scene.get();
    ships.reserve(size);
    for (std::size_t i = 0; i < size; ++i) {
        auto* ship = new Player(i + 1, i % 2 == 0, 100);
        feedStates(*ship, i);
        scene->attach(ship);
        ships.push_back(ship);
    }
}

Fleet::~Fleet()
{
    SceneGraph::instance = replaced;
}

void Fleet::settle()
{
    for (int frame = 0; frame < 60; ++frame) {
        scene->update(1.0F / 60.0F);
    }
}
