// What a broken or malicious server may send. Most of the checking is done by the sanitizers; what remains
// visible is that the scene stays in order and that an honest ship is shown as if nothing had been.
#include "network/MessageSerializer.h"
#include "scene/Player.h"
#include "scene/SceneGraph.h"
#include "tests/hostile/Arena.h"
#include "tests/network/Steering.h"
#include "tests/support/Messages.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <limits>
#include <random>
#include <vector>

namespace {

using Script = std::vector<std::string>;  // what arrives, one entry a frame

constexpr std::uint64_t honestId = 424242;
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float largest = std::numeric_limits<float>::max();
constexpr std::uint64_t lastId = std::numeric_limits<std::uint64_t>::max();
constexpr std::uint64_t beyondSigned = 0x8000000000000000U;

/// Swallows what the client says about it all, unless a test fails.
class Hostile : public testing::Test
{
protected:
    Hostile() { testing::internal::CaptureStdout(); }
    ~Hostile() override
    {
        const std::string said = testing::internal::GetCapturedStdout();
        std::fputs(HasFailure() ? said.c_str() : "", stdout);
    }

    void play(const Script& script, const char* name)
    {
        for (const std::string& arriving : script) {
            arena.receive(arriving);
            arena.runFrames(1);
            ASSERT_TRUE(Arena::isConsistent()) << name;
        }
        arena.runFrames(100);
        ASSERT_TRUE(Arena::isConsistent()) << name;
    }

    void expectAnHonestShipToFly(const char* name)
    {
        support::Ship ship;
        ship.id = honestId;
        ship.position = {1, 2, 3};
        arena.receive(support::shipInfo(ship));
        arena.runFrames(2);
        const auto* shown = dynamic_cast<Player*>(SceneGraph::getInstance()->getOBjectById(honestId));
        ASSERT_NE(shown, nullptr) << name;
        EXPECT_EQ(shown->position, Vector3(1, 2, 3)) << name;
        arena.receive(support::destroy(honestId));
        arena.runFrames(1);
        EXPECT_EQ(SceneGraph::getInstance()->getOBjectById(honestId), nullptr) << name;
    }

    Arena arena;
};

std::string ship(std::uint64_t id, Vector3 position = {}, Quaternion orientation = {}, float health = 100,
                 const std::string& name = "Rosa")
{
    support::Ship data;
    data.id = id;
    data.name = name;
    data.position = position;
    data.orientation = orientation;
    data.health = health;
    return support::shipInfo(data);
}

std::string named(std::uint64_t id, const std::string& name)
{
    return ship(id, {}, {}, 100, name);
}

// An info and then updates with the timestamps given, 20 units apart: far enough to snap, and close.
std::string flight(std::uint64_t id, const std::vector<std::uint32_t>& times)
{
    std::string frames = ship(id) + support::shotInfo(id + 1, true, {}, {largest, notANumber, -infinity});
    float x = 0;
    for (const std::uint32_t time : times) {
        frames += support::update(id, time, {x, 0, 0}) + support::update(id, time, {x + 1, 0, 0});
        x += 20;
        frames += support::update(id + 1, time, {x, 0, 0}, {0, 0, 0, 0});
    }
    return frames;
}

// One valid frame of every type, all about things that exist once the first two have arrived.
std::vector<std::string> validFrames()
{
    Vantor::ClientUpdate clientUpdate = steering(0xFFFFFFFFU);
    return {ship(7, {1, 2, 3}),
            support::shotInfo(8, true, {4, 5, 6}, {7, 8, 9}),
            support::update(7, 1100, {2, 2, 2}),
            support::destroy(8),
            MessageSerializer::serializeMessage(clientUpdate),
            support::welcome(7, 9)};
}

}  // namespace

TEST_F(Hostile, ScriptsLeaveTheSceneInOrder)
{
    const std::string shot = support::shotInfo(9, false, {1, 2, 3});
    const struct
    {
        const char* name;
        Script script;
    } table[] = {
        {"player data for a carrier",
         {named(0, std::string(60000, 'n')), ship(0, {largest, 0, 0}, {}, notANumber)}},
        {"a carrier destroyed, then announced as a player",
         {support::destroy(0), ship(0), support::update(0, 1, {notANumber, 0, 0}), support::destroy(0),
          support::destroy(0)}},
        {"a carrier destroyed and announced in one frame",
         {support::destroy(0) + ship(0) + support::destroy(0)}},
        {"long and odd names",
         {named(5, std::string(60000, 'n')), named(5, ""), named(5, "%s%n%d"),
          named(5, std::string("a\0b", 3)), named(5, "\xFF\xFE\x80"), support::destroy(5)}},
        {"unbounded health",
         {ship(5, {}, {}, notANumber), ship(6, {}, {}, infinity), ship(7, {}, {}, 1e30F),
          ship(8, {}, {}, -1e30F), ship(5, {}, {}, -infinity)}},
        {"unbounded positions",
         {ship(5, {largest, -largest, largest}), support::update(5, 1100, {-largest, largest, 0}),
          ship(6, {notANumber, 0, 0}), support::update(6, 1100, {infinity, -infinity, notANumber}),
          support::update(5, 1101, {}),
          support::shotInfo(7, true, {infinity, 0, 0}, {largest, largest, largest}), support::destroy(7)}},
        {"orientations of no length, or too much",
         {ship(5, {}, {0, 0, 0, 0}),
          support::update(5, 1100, {}, {notANumber, notANumber, notANumber, notANumber}),
          support::update(5, 1200, {}, {largest, largest, largest, largest}),
          support::update(5, 1300, {}, {0, 0, 0, 0}), ship(6, {}, {infinity, 0, 0, 0}),
          support::update(6, 1001, {}, {2, 0, 0, 0})}},
        {"timestamps that repeat", {flight(5, {1000, 1000, 1000, 1000}), flight(5, {1000})}},
        {"timestamps that run backwards", {flight(5, {5000, 4000, 3999, 0}), flight(5, {4294967295U, 1})}},
        {"timestamps that wrap", {flight(5, {4294967200U, 4294967295U, 0, 1, 2147483648U, 2147483647U})}},
        {"ids beyond the signed numbers",
         {ship(beyondSigned), ship(lastId), support::update(lastId, 1, {9, 9, 9}),
          support::destroy(beyondSigned), support::shotInfo(beyondSigned + 1, true, {}),
          support::destroy(beyondSigned + 1), support::destroy(lastId)}},
        {"ids that our own explosions take",
         {ship(2) + ship(3) + support::shotInfo(4, true, {}) + shot, support::destroy(9) + shot,
          support::destroy(4), ship(2) + ship(3), support::update(2, 1100, {1, 1, 1}),
          support::destroy(2) + support::destroy(3), ship(4),
          support::destroy(2) + support::destroy(3) + support::destroy(4) + support::destroy(5)}},
        {"destroyed twice", {shot + support::destroy(9) + support::destroy(9), support::destroy(9)}},
        {"destroyed and announced in one frame",
         {ship(5), support::destroy(5) + ship(5), ship(5), shot,
          support::destroy(9) + shot + support::destroy(9),
          support::destroy(5) + support::shotInfo(5, true, {}) + support::update(5, 3, {})}},
        {"one id, two types",
         {ship(9), shot, support::destroy(9), shot, ship(9), support::destroy(9), ship(9)}}};
    for (const auto& [name, script] : table) {
        play(script, name);
        expectAnHonestShipToFly(name);
        arena.reset();
    }
}

TEST_F(Hostile, AShotAndItsDestroyMeetAtTheEndOfItsLife)
{
    for (int late = -2; late <= 2; ++late) {
        arena.receive(support::shotInfo(9, true, {}));
        arena.runFrames(20 * 60 + late);
        arena.receive(support::destroy(9));
        arena.runFrames(100);
        EXPECT_TRUE(Arena::isConsistent()) << late;
        EXPECT_EQ(SceneGraph::getInstance()->children.size(), 2U) << "only the carriers are left";
    }
}

TEST_F(Hostile, CountlessExplosionsComeAndGo)
{
    std::string burst;
    for (std::uint64_t id = 1; id <= 2000; ++id) {
        burst += support::shotInfo(id, true, {}) + support::destroy(id);
    }
    play({burst, burst}, "burst");
    EXPECT_EQ(SceneGraph::getInstance()->children.size(), 2U) << "only the carriers are left";
}

// As a stream that stops, and as a frame that claims to be whole.
TEST_F(Hostile, FramesTruncatedAnywhereDoNoHarm)
{
    for (const std::string& frame : validFrames()) {
        for (std::size_t length = 0; length < frame.size(); ++length) {
            arena.receive(ship(7) + support::shotInfo(8, true, {}) + frame.substr(0, length));
            arena.runFrames(1);
            arena.reset();
            const std::string body = frame.substr(3, length);
            arena.receive(ship(7) + support::frame(static_cast<unsigned char>(frame[2]), body));
            arena.runFrames(1);
            ASSERT_TRUE(Arena::isConsistent());
            arena.reset();
        }
    }
    expectAnHonestShipToFly("truncated");
}

TEST_F(Hostile, FramesWithAnyByteChangedDoNoHarm)
{
    const std::string scene = ship(7) + support::shotInfo(8, true, {});
    for (const std::string& frame : validFrames()) {
        for (std::size_t place = 0; place < frame.size(); ++place) {
            std::string changed = frame;
            for (int value = 1; value < 256; ++value) {
                changed[place] = static_cast<char>(frame[place] ^ value);
                arena.receive(scene + changed + frame);
                arena.runFrames(2);
                ASSERT_TRUE(Arena::isConsistent())
                    << "type " << int{frame[2]} << ", byte " << place << " ^ " << value;
                arena.reset();
            }
        }
    }
    expectAnHonestShipToFly("changed");
}

TEST_F(Hostile, GarbageDoesNoHarm)
{
    for (unsigned int seed = 1; seed <= 300; ++seed) {
        std::mt19937 random(seed);
        std::string stream;
        for (int n = 0; n < 20; ++n) {
            std::string body(random() % 100, '\0');
            for (char& byte : body) {
                byte = static_cast<char>(random());
            }
            // Every third seed without frames around it.
            stream += seed % 3 == 0 ? body : support::frame(static_cast<unsigned char>(random() % 7), body);
            stream += validFrames()[random() % 6];
        }
        for (std::size_t at = 0; at < stream.size(); at += 100) {
            arena.receive(stream.substr(at, 100));
            arena.runFrames(1);
            ASSERT_TRUE(Arena::isConsistent()) << "seed " << seed;
        }
        arena.reset();
    }
    expectAnHonestShipToFly("garbage");
}
