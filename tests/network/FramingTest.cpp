#include "network/MessageSerializer.h"

#include "Common/Protobuf/Object/Object.pb.h"
#include "network/NetworkEvent.h"
#include "tests/network/Steering.h"
#include "tests/support/Messages.h"

#include <gtest/gtest.h>
#include <boost/algorithm/hex.hpp>

#include <numeric>
#include <vector>

namespace {

using Strings = std::vector<std::string>;

// Every event as the frame it came from.
Strings cut(const std::string& data, std::string& leftover)
{
    Strings frames;
    for (const auto& event :
         MessageSerializer::deserializeMessageArray(data.data(), data.size(), &leftover)) {
        frames.push_back(support::frame(static_cast<unsigned char>(event->messageType),
                                        event->message->SerializeAsString()));
    }
    return frames;
}

std::string joined(const Strings& frames)
{
    return std::accumulate(frames.begin(), frames.end(), std::string());
}

Strings oneOfEach()
{
    support::Ship ship;
    ship.id = 7;
    ship.blueTeam = true;
    ship.position = {1, 2, 3};
    ship.orientation = {1, 2, 3, 4};
    ship.score = 1;
    ship.redScore = 2;
    ship.blueScore = 3;
    return {support::shipInfo(ship),
            support::shotInfo(8, true, {1, 2, 3}, {4, 5, 6}),
            support::update(3, 4, {5, 6, 7}),
            support::destroy(8),
            steering,
            support::welcome(9, 10)};
}

const std::string good = support::destroy(8);

}  // namespace

TEST(Framing, TheBytesAreThoseThatServersSpeak)
{
    const Strings expected = {
        "4400010807100018E807220F0D0000803F15000000401D000040402A140D0000004015000040401D00008040250000803F"
        "32130D0000C84210011A04526F7361200128023003",
        "4400010808100118E807220F0D0000803F15000000401D000040402A140D0000000015000000001D00000000250000803F"
        "3A130A0F0D00008040150000A0401D0000C0401001",
        "2C0002080310041A0F0D0000A040150000C0401D0000E04022140D0000000015000000001D00000000250000803F",
        "0300030808",
        "1900040A140D0000004015000040401D00008040250000803F1007",
        "0C00050809100A1A050D0000C842"};
    const Strings frames = oneOfEach();
    for (std::size_t n = 0; n < expected.size(); ++n) {
        EXPECT_EQ(boost::algorithm::hex(frames[n]), expected[n]);
    }
    support::Ship ship;
    ship.name = std::string(600, 'n');
    EXPECT_EQ(boost::algorithm::hex(support::shipInfo(ship).substr(0, 3)), "9A0201") << "the low byte first";
}

TEST(Framing, ARunSplitAnywhereArrivesOnceAndWholeAndTheNextBeginningIsKept)
{
    const std::string run = joined(oneOfEach());
    for (std::size_t split = 0; split < run.size(); ++split) {
        std::string leftover;
        const std::string first = joined(cut(run.substr(0, split), leftover));
        EXPECT_EQ(first + leftover, run.substr(0, split));
        EXPECT_EQ(first + joined(cut(run.substr(split) + run.substr(0, 4), leftover)), run);
        EXPECT_EQ(leftover, run.substr(0, 4));
    }
}

TEST(Framing, ABadFrameIsReportedAndTheNextOneArrives)
{
    const std::string badType = "Unknown message type received (type byte: 0x";
    const std::string badBody = "Error in parseing message \n";
    const std::pair<std::string, std::string> table[] = {
        {support::frame(0, "body"), badType + "0) info \n"},
        {support::frame(255, ""), badType + "ff) info \n"},
        {support::frame(1, ""), badBody},
        {support::frame(5, "\x08\x01"), badBody},          // a required field is missing
        {support::frame(3, "\x08"), badBody},              // cut short
        {support::frame(3, steering.substr(3)), badBody},  // another type's
        {support::frame(1, "\x22\x7F\x01"), badBody}};     // a field that lies about its length
    for (const auto& [frame, diagnostic] : table) {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        std::string leftover;
        EXPECT_EQ(cut(frame + good, leftover), Strings{good});
        EXPECT_EQ(leftover, "");
        EXPECT_EQ(testing::internal::GetCapturedStdout(), diagnostic + "Error in deserializing of message\n");
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    }
}

TEST(Framing, ALengthOfZeroIsNeverPassed)
{
    const std::string stuck = std::string(2, '\0') + good;
    std::string leftover;
    EXPECT_EQ(cut(good + stuck, leftover), Strings{good});
    EXPECT_EQ(cut(good, leftover), Strings());
    EXPECT_EQ(leftover, stuck + good);
}

TEST(Framing, TheLongestFrameArrives)
{
    // A field that nobody knows is skipped, whatever its size.
    const std::string filler = "\x7A\xF8\xFF\x03" + std::string(65528, 'x');
    const std::string longest = support::frame(3, good.substr(3) + filler);
    ASSERT_EQ(longest.size(), 2U + 65535U);
    std::string leftover;
    EXPECT_EQ(cut(longest.substr(0, 40000), leftover), Strings());
    EXPECT_EQ(cut(longest.substr(40000), leftover), Strings{longest});
}
