#include "PracticeServer/ClientFrame.h"

#include "Common/Protobuf/Object/Object.pb.h"
#include "tests/PracticeServer/TestClient.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace practice;

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

std::optional<ShipInput> readBack(const std::string& bytes)
{
    ClientFrame frame;
    if (cutClientFrame(bytes.data(), bytes.size(), frame) != CutResult::frame) {
        return std::nullopt;
    }
    return readSteering(frame);
}

}  // namespace

TEST(ClientFrames, AnUpdateIsReadWithItsTag)
{
    const std::string bytes = steeringFrame(0x1234, {Quaternion(2, 0, 0, 0), control::up | control::fire});
    ClientFrame frame;
    ASSERT_EQ(cutClientFrame(bytes.data(), bytes.size(), frame), CutResult::frame);
    EXPECT_EQ(frame.qport, 0x1234);
    EXPECT_EQ(frame.size(), bytes.size());
    const auto input = readSteering(frame);
    ASSERT_TRUE(input);
    EXPECT_EQ(input->orientation, Quaternion(1, 0, 0, 0));
    EXPECT_EQ(input->controls, control::up | control::fire);
}

TEST(ClientFrames, UnknownControlBitsAreDropped)
{
    const auto input = readBack(steeringFrame(1, {Quaternion(), 0xFFFFFFFF}));
    ASSERT_TRUE(input);
    EXPECT_EQ(input->controls, 0x4000003FU);
}

TEST(ClientFrames, AnOrientationThatIsNoneIsRefused)
{
    for (const Quaternion& q :
         {Quaternion(0, 0, 0, 0), Quaternion(notANumber, 0, 0, 0), Quaternion(1, 0, notANumber, 0),
          Quaternion(1, infinity, 0, 0), Quaternion(1e38F, 1e38F, 0, 0), Quaternion(1e-30F, 0, 0, 0)}) {
        EXPECT_FALSE(readBack(steeringFrame(1, {q, 0}))) << q.toString();
    }
}

TEST(ClientFrames, DamagedFramesAreRefused)
{
    const std::string whole = steeringFrame(1, {});
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_FALSE(readBack(whole.substr(0, length))) << length << " bytes";
    }
    std::string otherType = whole;
    otherType[4] = 1;
    EXPECT_FALSE(readBack(otherType));
    std::string emptyBody = {1, 0, 1, 0, 4};
    EXPECT_FALSE(readBack(emptyBody));
}

TEST(ClientStream, FramesArriveOnceWhereverTheStreamIsSplit)
{
    const std::string run = steeringFrame(1, {}) + steeringFrame(2, {}) + steeringFrame(3, {});
    for (std::size_t split = 0; split <= run.size(); ++split) {
        ClientStream stream;
        std::vector<int> qports;
        const auto note = [&qports](const ClientFrame& frame) { qports.push_back(frame.qport); };
        stream.feed(run.data(), split, note);
        stream.feed(run.data() + split, run.size() - split, note);
        EXPECT_EQ(qports, (std::vector<int>{1, 2, 3})) << "split at " << split;
        EXPECT_EQ(stream.pendingBytes(), 0U);
    }
}

TEST(ClientStream, GarbageYieldsNothingAndTakesNoMemory)
{
    for (const char filler : {'\x00', '\xFF', '\x7F', '\x01'}) {
        ClientStream stream;
        const std::string garbage(5000, filler);
        for (int i = 0; i < 100; ++i) {
            stream.feed(garbage.data(), garbage.size(),
                        [](const ClientFrame& frame) { EXPECT_FALSE(readSteering(frame)); });
            EXPECT_LT(stream.pendingBytes(), ClientFrame::largest + garbage.size());
        }
        EXPECT_LT(stream.pendingBytes(), ClientFrame::largest);
    }
}
