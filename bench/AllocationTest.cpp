// Counts what a frame allocates. Without a display the OpenGL calls do nothing: all that is counted is ours.
#include "bench/Fleet.h"
#include "engine/ResourceManager.h"
#include "scene/Billboard.h"
#include "scene/Projectile.h"
#include "scene/TestCube.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t allocations = 0;

}  // namespace

void* operator new(std::size_t size)
{
    ++allocations;
    if (void* memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace {

std::size_t allocationsOfFrames(SceneGraph& scene)
{
    const std::size_t before = allocations;
    for (int frame = 0; frame < 10; ++frame) {
        scene.update(1.0F / 60.0F);
        scene.draw();
    }
    return allocations - before;
}

/// Enters the files into the cache, under names that no context knows.
void pretendResourcesAreLoaded()
{
    ResourceManager* resources = ResourceManager::getInstance();
    for (const char* name : {"texture-white.png", "carrier-texture-white.png", "BOOOM.png"}) {
        resources->textures[name] = 1;
    }
    for (const char* name : {"fighter.obj", "shot.obj", "carrier.obj"}) {
        resources->models[name] = 1;
    }
}

}  // namespace

TEST(Allocations, AreCounted)
{
    Fleet fleet(1);
    const std::size_t before = allocations;
    fleet.scene->addToRemoveList(fleet.ships.front());
    EXPECT_GT(allocations, before);
}

TEST(Allocations, AreNoneInAFrame)
{
    pretendResourcesAreLoaded();
    Fleet fleet(1000);  // ships in the middle of a turn
    for (long long id = 2000; id < 3000; ++id) {
        fleet.scene->attach(new Projectile(static_cast<unsigned long long>(id)));
        fleet.scene->attach(new Billboard(id, {}, {}));
        fleet.scene->attach(new TestCube(id, true, false));
    }
    EXPECT_EQ(allocationsOfFrames(*fleet.scene), 0U);
}
