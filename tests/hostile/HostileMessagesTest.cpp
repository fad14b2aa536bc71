// What a broken or malicious server may send. The sanitizers find most faults. Without them it remains
// visible whether the scene stays in order and an honest ship is still shown.
#include "tests/hostile/Arena.h"
#include "tests/network/Support.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using messages::destroyFrame;
using messages::updateFrame;
using Frames = std::vector<std::string>;  // one entry per frame of the game
using Limits = std::numeric_limits<float>;

constexpr std::uint64_t lastId = std::numeric_limits<std::uint64_t>::max();

std::string ship(std::uint64_t id, const std::string& name = "Rosa", float v = 0)
{
    return messages::infoFrame(
        messages::ShipState{id, false, {v, -v, v}, {v, v, v, v}, v, name, 0, 0, 0, 1000});
}

std::string shot(std::uint64_t id, Vector3 position = {1, 2, 3}, Vector3 velocity = {4, 5, 6})
{
    return messages::infoFrame(messages::ShotState{id, true, position, velocity});
}

Frames oddNumbers()
{
    Frames frames;
    for (const float v :
         {0.0F, Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), Limits::max()}) {
        frames.push_back(ship(5, "Rosa", v) + shot(6, {v, v, v}, {v, v, v}));
        frames.push_back(updateFrame(5, 1100, {v, v, v}, {v, v, v, v}) + ship(0, "Rosa", v));
        frames.push_back(updateFrame(5, 1101, {}) + updateFrame(6, 1100, {-v, v, 0}, {v, 0, 0, 0}) +
                         destroyFrame(6));
    }
    return frames;
}

// Times that repeat, run backwards and wrap. Each state lies 20 units further on, which snaps; then one close
// to it, which does not.
Frames oddTimes()
{
    Frames frames = {ship(5)};
    for (const std::uint32_t time :
         {1000U, 1000U, 5000U, 4999U, 0U, 4294967295U, 1U, 4294967295U, 2147483648U, 2147483647U}) {
        const float x = 20.0F * static_cast<float>(frames.size());
        frames.push_back(updateFrame(5, time, {x, 0, 0}) + updateFrame(5, time, {x + 1, 0, 0}, {0, 0, 0, 0}));
    }
    return frames;
}

const std::pair<const char*, Frames> attacks[] = {
    {"a carrier as a player",
     {ship(0, std::string(60000, 'n')), destroyFrame(0),
      ship(0) + updateFrame(0, 1, {Limits::infinity(), 0, 0}), destroyFrame(0) + ship(0) + destroyFrame(0)}},
    {"long and odd names",
     {ship(5, std::string(60000, 'n')), ship(5, ""), ship(5, "%s%n%d"), ship(5, std::string("a\0b", 3)),
      ship(5, "\xFF\xFE\x80"), destroyFrame(5)}},
    {"odd numbers", oddNumbers()},
    {"odd times", oddTimes()},
    {"ids beyond the signed numbers",
     {ship(lastId / 2 + 1), ship(lastId), updateFrame(lastId, 1, {9, 9, 9}), destroyFrame(lastId / 2 + 1),
      shot(lastId - 1), destroyFrame(lastId - 1), destroyFrame(lastId)}},
    {"ids that our own explosions take",
     {ship(2) + ship(3) + shot(4) + shot(9), destroyFrame(9) + shot(9), destroyFrame(4), ship(2) + ship(3),
      updateFrame(2, 1100, {1, 1, 1}), destroyFrame(2) + destroyFrame(3), ship(4),
      destroyFrame(2) + destroyFrame(4) + destroyFrame(5)}},
    {"destroyed twice, announced at once again, and under two types",
     {shot(9) + destroyFrame(9) + destroyFrame(9), destroyFrame(9) + shot(9) + destroyFrame(9), ship(5),
      destroyFrame(5) + ship(5), ship(5), destroyFrame(5) + shot(5) + updateFrame(5, 3, {}), ship(9), shot(9),
      destroyFrame(9), ship(9)}}};

TEST(Hostile, AttacksLeaveTheSceneInOrder)
{
    Arena arena;
    for (const auto& [name, frames] : attacks) {
        for (const int framesBetween : {1, 100}) {
            printedBy([&] { EXPECT_EQ(arena.play(frames, framesBetween), "") << name; });
        }
    }
    for (int late = -2; late <= 2; ++late) {  // a shot's lifetime is 20 s
        EXPECT_EQ(arena.play({shot(9), destroyFrame(9)}, 20 * 60 + late), "") << late;
    }
}

// Frames cut short with a length that fits, and frames with any byte changed.
TEST(Hostile, DamagedFramesDoNoHarm)
{
    Arena arena;
    for (const std::string& frame :
         {ship(7), shot(8), updateFrame(7, 1100, {2, 2, 2}), destroyFrame(8),
          messages::steeringFrame(0, {}).substr(framing::qportSize), messages::welcomeFrame({7}, 9)}) {
        printedBy([&] {
            for (std::size_t place = 0; place < frame.size(); ++place) {
                const std::string body = frame.substr(3, place);
                EXPECT_EQ(
                    arena.play({ship(7) + shot(8) + rawFrame(static_cast<std::uint8_t>(frame[2]), body)}),
                    "");
                for (int value = 1; value < 256; ++value) {
                    std::string changed = frame;
                    changed[place] = static_cast<char>(frame[place] ^ value);
                    ASSERT_EQ(arena.play({ship(7) + shot(8) + changed + frame}, 2), "")
                        << "type " << int{frame[2]} << ", byte " << place << " ^ " << value;
                }
            }
        });
    }
}

// The fuzz target's seeds and findings.
TEST(Hostile, EveryCommittedFuzzInputPasses)
{
    int inputs = 0;
    for (const auto& entry : std::filesystem::directory_iterator(VANTOR_FUZZ_CORPUS)) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(file), {});
        ASSERT_FALSE(bytes.empty()) << entry.path();
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
        ++inputs;
    }
    EXPECT_GE(inputs, 4);
}

}  // namespace
