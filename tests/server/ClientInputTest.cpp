#include "server/net/ClientInput.h"

#include "network/Messages.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <vector>

using namespace practice;

namespace {

std::optional<FrameMeaning> meaningOf(const std::string& bytes, ShipInput& input)
{
    framing::ClientFrame frame;
    const bool isWhole = framing::cutClientFrame(bytes.data(), bytes.size(), frame) == framing::Cut::frame;
    return isWhole ? std::optional(readSteering(frame, input)) : std::nullopt;
}

}  // namespace

TEST(ClientInput, OnlySoundSteeringCounts)
{
    const std::string whole = messages::steeringFrame(1, {Quaternion(2, 0, 0, 0), 0xFFFFFFFF});
    ShipInput input;
    EXPECT_EQ(meaningOf(whole, input), FrameMeaning::steering);
    EXPECT_EQ(input.orientation, Quaternion(1, 0, 0, 0));
    EXPECT_EQ(input.controls, 0x4000003FU);
    EXPECT_EQ(meaningOf(whole.substr(0, 4) + '\x01' + whole.substr(5), input), FrameMeaning::nothing);
    EXPECT_EQ(meaningOf({1, 0, 1, 0, 4}, input), FrameMeaning::garbage) << "no body";
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const Quaternion& q : {Quaternion(0, 0, 0, 0), Quaternion(1, 0, nan, 0),
                                Quaternion(1e38F, 1e38F, 0, 0), Quaternion(1e-30F, 0, 0, 0)}) {
        EXPECT_EQ(meaningOf(messages::steeringFrame(1, {q, 1}), input), FrameMeaning::nothing)
            << q.toString();
    }
    EXPECT_EQ(input.controls, 0x4000003FU) << "refused steering changed the input";
}

TEST(ClientInput, CutsFramesAtEverySplitAndUpToABreak)
{
    const std::string frame = messages::steeringFrame(1, {});
    const std::string other = messages::steeringFrame(0x1234, {});
    const std::string broken(5, '\0');
    std::vector<int> qports;
    const auto note = [&qports](const framing::ClientFrame& f) { qports.push_back(f.qport); };
    const std::string run = frame + other + frame;
    for (std::size_t split = 0; split <= run.size(); ++split) {
        qports.clear();
        std::string stream = run.substr(0, split);
        EXPECT_TRUE(cutStream(stream, note));
        stream += run.substr(split);
        EXPECT_TRUE(cutStream(stream, note));
        EXPECT_EQ(qports, (std::vector<int>{1, 0x1234, 1})) << "split at " << split;
        EXPECT_EQ(stream, "");
    }
    std::string stream = frame + broken;
    EXPECT_FALSE(cutStream(stream, note));

    const struct
    {
        std::string datagram;
        bool isSound;
        std::vector<int> qports;
    } cases[] = {
        {"", true, {}},
        {frame + frame, true, {1, 1}},
        {frame + other + frame, true, {1}},
        {frame + broken, false, {1}},
        {frame + frame.substr(0, 7), false, {1}},
        {other + broken, true, {}},
    };
    for (const auto& c : cases) {
        qports.clear();
        EXPECT_EQ(cutDatagram(c.datagram.data(), c.datagram.size(), 1, note), c.isSound);
        EXPECT_EQ(qports, c.qports);
    }
}
