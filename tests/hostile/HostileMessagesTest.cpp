// What a broken or malicious server may send. The sanitizers find most faults. Without them it remains
// visible whether the scene stays in order and an honest ship is still shown.
#include "network/Framing.h"
#include "tests/hostile/Arena.h"
#include "tests/hostile/Attacks.h"
#include "tests/network/Support.h"

#include <malloc.h>

using namespace attacks;

TEST(Hostile, AttacksLeaveTheSceneInOrder)
{
    Arena arena;
    for (const auto& attack : all) {  // clang cannot capture a structured binding
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
    printedBy([&] {
        for (const std::string& frame : {ship(7), shot(8), updateFrame(7, 1100, {2, 2, 2}), destroyFrame(8),
                                         messages::welcomeFrame({7}, 9), peer::rawFrame(4, "\x10\x07")}) {
            for (std::size_t place = 0; place < frame.size(); ++place) {
                const auto type = static_cast<unsigned char>(frame[2]);
                std::string damaged = peer::rawFrame(type, frame.substr(3, place)).append(frame);
                for (int value = 1; value <= 256; ++value) {
                    ASSERT_EQ(arena.play({ship(7) + shot(8), damaged}, 1), "") << damaged;
                    damaged = frame;
                    damaged[place] = static_cast<char>(frame[place] ^ value);
                    damaged += frame;
                }
            }
        }
    });
}

// A frame before an honest ship 6, and the first ship then shown. Each frame is filled up to the length that
// its first two bytes say.
TEST(Hostile, AnOddFrameIsReadToItsEndOrDropped)
{
    const auto longer = [](const std::string& end) { return peer::rawFrame(1, ship(5).substr(3) + end); };
    const std::pair<std::string, std::uint64_t> cases[] = {
        {"\x15\x03\x01", 6},  // TLS
        {"GET / HTTP/1.1\r\n", 6},
        {std::string({'\0', ship(5)[0]}) + ship(5).substr(2), 6},          // the length's bytes are swapped
        {longer("\x7A\x80\xFC\x03" + std::string(65024, 'x')), 5},         // an unknown field
        {longer(std::string(100, '\x7B') + std::string(100, '\x7C')), 5},  // nested groups
        {longer(std::string(20000, '\x7B') + std::string(20000, '\x7C')), 6},
        {longer(std::string(20000, '\x08') + "\x08\x09"), 9}};  // 10,001 ids: the last one counts
    Arena arena;
    for (auto [frame, shown] : cases) {
        frame.resize(framing::lengthSize + framing::uint16At(frame.data()));
        arena.reset();
        printedBy([&, &bytes = frame] { arena.receive(bytes + ship(6)); });
        EXPECT_EQ(SceneGraph::instance->getListOfType(SGT_PLAYER)->front()->id, shown) << frame.substr(0, 5);
    }
}

// 10,000 ships and shots a second. The shots explode.
TEST(Hostile, ObjectsThatComeAndGoLeaveNoMemory)
{
    std::string frame;
    for (std::uint64_t id = 1000000; id < 1000167; ++id) {
        frame += (id % 2 == 0 ? ship(id) : shot(id)) + destroyFrame(id);
    }
    Arena arena;
    double used[2];  // bytes; 0 under sanitizers, which report leaks
    for (double& bytes : used) {
        printedBy([&] { EXPECT_EQ(arena.play(Frames(120, frame)), ""); });
        bytes = static_cast<double>(mallinfo2().uordblks);
    }
    EXPECT_NEAR(used[1], used[0], 1e5);
}
