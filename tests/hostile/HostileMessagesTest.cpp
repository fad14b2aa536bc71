// What a broken or malicious server may send. The sanitizers find most faults. Without them it remains
// visible whether the scene stays in order and an honest ship is still shown.
#include "tests/hostile/Arena.h"
#include "tests/hostile/Attacks.h"
#include "tests/network/Support.h"

using namespace attacks;

TEST(Hostile, AttacksLeaveTheSceneInOrder)
{
    Arena arena;
    for (const auto& attack : all) {  // a binding cannot be captured
        for (const int framesBetween : {1, 100}) {
            printedBy([&] { EXPECT_EQ(arena.play(attack.second, framesBetween), "") << attack.first; });
        }
    }
    for (int late = -2; late <= 2; ++late) {  // a shot's lifetime is 20 s
        EXPECT_EQ(arena.play({shot(9), destroyFrame(9)}, 20 * 60 + late), "") << late;
    }
}

// Frames with any byte changed, or cut short with a length that fits.
TEST(Hostile, DamagedFramesDoNoHarm)
{
    Arena arena;
    for (const std::string& frame : {ship(7), shot(8), updateFrame(7, 1100, {2, 2, 2}), destroyFrame(8),
                                     messages::welcomeFrame({7}, 9), peer::rawFrame(4, "\x10\x07")}) {
        std::vector<std::string> damaged;
        for (std::size_t place = 0; place < frame.size(); ++place) {
            damaged.push_back(peer::rawFrame(static_cast<unsigned char>(frame[2]), frame.substr(3, place)));
            for (int value = 1; value < 256; ++value) {
                damaged.push_back(frame);
                damaged.back()[place] = static_cast<char>(frame[place] ^ value);
            }
        }
        printedBy([&] {
            for (const std::string& bytes : damaged) {
                ASSERT_EQ(arena.play({ship(7) + shot(8) + bytes + frame}, 2), "") << bytes;
            }
        });
    }
}
