// What a broken or malicious server may send. Most of the checking is done by the sanitizers; what remains
// visible is that the scene stays in order and that an honest ship is shown as if nothing had been.
#include "peer/ScriptedServer.h"
#include "tests/hostile/Arena.h"
#include "tests/network/Steering.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <random>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::string shotInfo(std::uint64_t id, bool blueTeam, Vector3 position, Vector3 velocity = {})
{
    return messages::infoFrame(messages::ShotState{id, blueTeam, position, velocity});
}

using Script = std::vector<std::string>;  // what arrives, one entry a frame
using Limits = std::numeric_limits<float>;

constexpr std::uint64_t lastId = std::numeric_limits<std::uint64_t>::max();

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

    Arena arena;
};

std::string ship(std::uint64_t id, const std::string& name = "Rosa", float v = 0)
{
    return messages::infoFrame(
        messages::ShipState{id, false, {v, -v, v}, {v, v, v, v}, v, name, 0, 0, 0, 1000});
}

Script numbersThatAreNone()
{
    Script script;
    for (const float v :
         {0.0F, Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), Limits::max()}) {
        script.push_back(ship(5, "Rosa", v) + shotInfo(6, true, {v, v, v}, {v, v, v}));
        script.push_back(messages::updateFrame(5, 1100, {v, v, v}, {v, v, v, v}) + ship(0, "Rosa", v));
        script.push_back(messages::updateFrame(5, 1101, {}) +
                         messages::updateFrame(6, 1100, {-v, v, 0}, {v, 0, 0, 0}) +
                         messages::destroyFrame(6));
    }
    return script;
}

// An object 20 units on with every state, and close to it: far enough to snap, and not.
Script timesThatRepeatRunBackwardsAndWrap()
{
    Script script = {ship(5)};
    for (const std::uint32_t time :
         {1000U, 1000U, 5000U, 4999U, 0U, 4294967295U, 1U, 4294967295U, 2147483648U, 2147483647U}) {
        const float x = 20.0F * static_cast<float>(script.size());
        script.push_back(messages::updateFrame(5, time, {x, 0, 0}) +
                         messages::updateFrame(5, time, {x + 1, 0, 0}, {0, 0, 0, 0}));
    }
    return script;
}

}  // namespace

TEST_F(Hostile, ScriptsLeaveTheSceneInOrder)
{
    const std::string shot = shotInfo(9, false, {1, 2, 3});
    const std::pair<const char*, Script> table[] = {
        {"a carrier as a player",
         {ship(0, std::string(60000, 'n')), messages::destroyFrame(0),
          ship(0) + messages::updateFrame(0, 1, {Limits::infinity(), 0, 0}),
          messages::destroyFrame(0) + ship(0) + messages::destroyFrame(0)}},
        {"long and odd names",
         {ship(5, std::string(60000, 'n')), ship(5, ""), ship(5, "%s%n%d"), ship(5, std::string("a\0b", 3)),
          ship(5, "\xFF\xFE\x80"), messages::destroyFrame(5)}},
        {"numbers", numbersThatAreNone()},
        {"times", timesThatRepeatRunBackwardsAndWrap()},
        {"ids beyond the signed numbers",
         {ship(lastId / 2 + 1), ship(lastId), messages::updateFrame(lastId, 1, {9, 9, 9}),
          messages::destroyFrame(lastId / 2 + 1), shotInfo(lastId - 1, true, {}),
          messages::destroyFrame(lastId - 1), messages::destroyFrame(lastId)}},
        {"ids that our own explosions take",
         {ship(2) + ship(3) + shotInfo(4, true, {}) + shot, messages::destroyFrame(9) + shot,
          messages::destroyFrame(4), ship(2) + ship(3), messages::updateFrame(2, 1100, {1, 1, 1}),
          messages::destroyFrame(2) + messages::destroyFrame(3), ship(4),
          messages::destroyFrame(2) + messages::destroyFrame(4) + messages::destroyFrame(5)}},
        {"destroyed twice, announced in the same frame, and under two types",
         {shot + messages::destroyFrame(9) + messages::destroyFrame(9),
          messages::destroyFrame(9) + shot + messages::destroyFrame(9), ship(5),
          messages::destroyFrame(5) + ship(5), ship(5),
          messages::destroyFrame(5) + shotInfo(5, true, {}) + messages::updateFrame(5, 3, {}), ship(9), shot,
          messages::destroyFrame(9), ship(9)}}};
    for (const auto& [name, script] : table) {
        EXPECT_EQ(arena.play(script), "") << name;
        EXPECT_EQ(arena.play(script, 100), "") << name;
    }
}

TEST_F(Hostile, AShotAndItsDestroyMeetAtTheEndOfItsLife)
{
    for (int late = -2; late <= 2; ++late) {
        EXPECT_EQ(arena.play({shotInfo(9, true, {}), messages::destroyFrame(9)}, 20 * 60 + late), "") << late;
    }
}

// Cut as a frame that claims to be whole, and with any byte changed.
TEST_F(Hostile, DamagedFramesDoNoHarm)
{
    const std::string scene = ship(7) + shotInfo(8, true, {});
    for (const std::string& frame :
         {ship(7), shotInfo(8, true, {4, 5, 6}, {7, 8, 9}), messages::updateFrame(7, 1100, {2, 2, 2}),
          messages::destroyFrame(8), steering, messages::welcomeFrame({7}, 9)}) {
        for (std::size_t place = 0; place < frame.size(); ++place) {
            const std::string body = frame.substr(3, place);
            EXPECT_EQ(arena.play({scene + peer::rawFrame(static_cast<unsigned char>(frame[2]), body)}), "");
            for (int value = 1; value < 256; ++value) {
                std::string changed = frame;
                changed[place] = static_cast<char>(frame[place] ^ value);
                ASSERT_EQ(arena.play({scene + changed + frame}, 2), "")
                    << "type " << int{frame[2]} << ", byte " << place << " ^ " << value;
            }
        }
    }
}

// The fuzz target's seeds, and whatever it found in the past; then each with bytes changed at random.
TEST_F(Hostile, EveryCommittedFuzzInputPasses)
{
    std::mt19937 random(4711);
    int inputs = 0;
    for (const auto& entry : std::filesystem::directory_iterator(VANTOR_FUZZ_CORPUS)) {
        std::ifstream file(entry.path(), std::ios::binary);
        std::string bytes(std::istreambuf_iterator<char>(file), {});
        ASSERT_FALSE(bytes.empty()) << entry.path();
        for (int run = 0; run < 200; ++run) {
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
            bytes[random() % bytes.size()] = static_cast<char>(random());
        }
        ++inputs;
    }
    EXPECT_GE(inputs, 4);
}
