#include "server/net/ClientFrame.h"

#include "network/Messages.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>

using namespace practice;

namespace {

std::optional<ShipInput> readBack(const std::string& bytes)
{
    framing::ClientFrame frame;
    const bool isWhole = framing::cutClientFrame(bytes.data(), bytes.size(), frame) == framing::Cut::frame;
    ShipInput input;
    const bool steers = isWhole && readSteering(frame, input) == FrameMeaning::steering;
    return steers ? std::optional(input) : std::nullopt;
}

}  // namespace

TEST(ClientFrames, OnlyWholeUpdatesWithAnOrientationAreReadAndOnlyKnownControls)
{
    const std::string whole = messages::steeringFrame(1, {Quaternion(2, 0, 0, 0), 0xFFFFFFFF});
    const ShipInput input = readBack(whole).value();
    EXPECT_EQ(input.orientation, Quaternion(1, 0, 0, 0));
    EXPECT_EQ(input.controls, 0x4000003FU);
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_FALSE(readBack(whole.substr(0, length))) << length << " bytes";
    }
    EXPECT_FALSE(readBack(whole.substr(0, 4) + '\x01' + whole.substr(5))) << "another type";
    EXPECT_FALSE(readBack({1, 0, 1, 0, 4})) << "no body";
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const Quaternion& q : {Quaternion(0, 0, 0, 0), Quaternion(1, 0, nan, 0),
                                Quaternion(1e38F, 1e38F, 0, 0), Quaternion(1e-30F, 0, 0, 0)}) {
        EXPECT_FALSE(readBack(messages::steeringFrame(1, {q, 0}))) << q.toString();
    }
}

TEST(ClientStream, FramesArriveOnceWhereverTheStreamIsSplit)
{
    const std::string run =
        messages::steeringFrame(1, {}) + messages::steeringFrame(0x1234, {}) + messages::steeringFrame(3, {});
    for (std::size_t split = 0; split <= run.size(); ++split) {
        ClientStream stream;
        std::vector<int> qports;
        const auto note = [&qports](const framing::ClientFrame& frame) { qports.push_back(frame.qport); };
        stream.feed(run.data(), split, note);
        stream.feed(run.data() + split, run.size() - split, note);
        EXPECT_EQ(qports, (std::vector<int>{1, 0x1234, 3})) << "split at " << split;
        EXPECT_EQ(stream.pendingBytes(), 0U);
    }
}
