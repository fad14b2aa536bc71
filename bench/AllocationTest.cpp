// Counts what a frame allocates. Without a display the OpenGL calls do nothing: what is counted is all ours.
#include "bench/AllocationCounter.h"
#include "bench/Fleet.h"
#include "engine/ResourceManager.h"
#include "scene/Billboard.h"
#include "scene/Projectile.h"
#include "scene/TestCube.h"

#include <gtest/gtest.h>

#include <ostream>

namespace {

constexpr float frameTime = 1.0F / 60.0F;

std::size_t allocationsOfFrames(SceneGraph& scene)
{
    const std::size_t before = allocationCount();
    for (int frame = 0; frame < 10; ++frame) {
        scene.update(frameTime);
        scene.draw();
    }
    return allocationCount() - before;
}

// The files count as loaded: lists and textures that only a context would know.
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

Transform* makeShip(std::size_t i)
{
    return new Player(i, i % 2 == 0, 100);
}
Transform* makeShot(std::size_t i)
{
    return new Projectile(i);
}
Transform* makeExplosion(std::size_t i)
{
    return new Billboard(static_cast<long long>(i), {}, {});
}
Transform* makeCarrier(std::size_t i)
{
    return new TestCube(static_cast<long long>(i), true, i % 2 == 0);
}

struct Kind
{
    const char* name;
    Transform* (*make)(std::size_t i);
};

void PrintTo(const Kind& kind, std::ostream* out)
{
    *out << kind.name;
}

class AllocationsOf : public testing::TestWithParam<Kind>
{
};

TEST(Allocations, AreSeenByTheCounter)
{
    Fleet fleet(1);
    const std::size_t before = allocationCount();
    fleet.scene->addToRemoveList(fleet.ships.front());
    EXPECT_GT(allocationCount(), before);
}

TEST_P(AllocationsOf, AFrameAreNoneHoweverManyObjectsItShows)
{
    pretendResourcesAreLoaded();
    for (const std::size_t count : {100U, 1000U}) {
        const Fleet fleet(0);
        for (std::size_t i = 1; i <= count; ++i) {
            fleet.scene->attach(GetParam().make(i));
        }
        EXPECT_EQ(allocationsOfFrames(*fleet.scene), 0U) << count << " objects";
    }
}

TEST(Allocations, OfAFrameWithTurningShipsAreNone)
{
    pretendResourcesAreLoaded();
    const Fleet fleet(1000);
    EXPECT_EQ(allocationsOfFrames(*fleet.scene), 0U);
}

INSTANTIATE_TEST_SUITE_P(EveryKind, AllocationsOf,
                         testing::Values(Kind{"Ships", makeShip}, Kind{"Shots", makeShot},
                                         Kind{"Explosions", makeExplosion}, Kind{"Carriers", makeCarrier}),
                         [](const testing::TestParamInfo<Kind>& kind) {
                             return std::string(kind.param.name);
                         });

}  // namespace
