#include "network/MessageSerializer.h"

#include "Common/Protobuf/Object/Object.pb.h"
#include "network/Messages.h"
#include "network/NetworkEvent.h"
#include "peer/ScriptedServer.h"
#include "tests/network/Steering.h"

#include <gtest/gtest.h>
#include <boost/algorithm/hex.hpp>

namespace {

// The frames that the events of a run came from, one behind the other.
std::string cut(const std::string& data, std::string& leftover)
{
    std::string frames;
    for (const auto& event :
         MessageSerializer::deserializeMessageArray(data.data(), data.size(), &leftover)) {
        frames += peer::rawFrame(static_cast<unsigned char>(event->messageType),
                                 event->message->SerializeAsString());
    }
    return frames;
}

const messages::ShipState ship = {7, true, {1, 2, 3}, {1, 2, 3, 4}, 100, "Rosa", 1, 2, 3, 1000};
const std::pair<std::string, const char*> everyKind[] = {
    {messages::infoFrame(ship),
     "4400010807100018E807220F0D0000803F15000000401D000040402A140D0000004015000040401D00008040250000803F"
     "32130D0000C84210011A04526F7361200128023003"},
    {messages::infoFrame(messages::ShotState{8, true, {1, 2, 3}, {4, 5, 6}}),
     "4400010808100118E807220F0D0000803F15000000401D000040402A140D0000000015000000001D00000000250000803F"
     "3A130A0F0D00008040150000A0401D0000C0401001"},
    {messages::updateFrame(3, 4, {5, 6, 7}),
     "2C0002080310041A0F0D0000A040150000C0401D0000E04022140D0000000015000000001D00000000250000803F"},
    {messages::destroyFrame(8), "0300030808"},
    {steering, "1900040A140D0000004015000040401D00008040250000803F1007"},
    {messages::welcomeFrame({9}, 10), "1B00050809100A1A140D0000C84210001A0550696C6F74200028003000"}};

const std::string good = messages::destroyFrame(8);

}  // namespace

TEST(Framing, TheBytesAreThoseThatServersSpeak)
{
    for (const auto& [frame, bytes] : everyKind) {
        EXPECT_EQ(boost::algorithm::hex(frame), bytes);
    }
    messages::ShipState talkative;
    talkative.name = std::string(600, 'n');
    EXPECT_EQ(messages::infoFrame(talkative).substr(0, 3), "\x9A\x02\x01") << "the low byte first";
}

TEST(Framing, ARunSplitAnywhereArrivesOnceAndWholeAndTheNextBeginningIsKept)
{
    std::string run;
    for (const auto& [frame, bytes] : everyKind) {
        run += frame;
    }
    for (std::size_t split = 0; split < run.size(); ++split) {
        std::string leftover;
        const std::string first = cut(run.substr(0, split), leftover);
        EXPECT_EQ(first + leftover, run.substr(0, split));
        EXPECT_EQ(first + cut(run.substr(split) + run.substr(0, 4), leftover), run);
        EXPECT_EQ(leftover, run.substr(0, 4));
    }
}

TEST(Framing, ABadFrameIsReportedAndTheNextOneArrives)
{
    const std::string badType = "Unknown message type received (type byte: 0x";
    const std::string badBody = "Error in parseing message \n";
    const std::pair<std::string, std::string> table[] = {
        {peer::rawFrame(0, "body"), badType + "0) info \n"},
        {peer::rawFrame(255, ""), badType + "ff) info \n"},
        {peer::rawFrame(1, ""), badBody},
        {peer::rawFrame(5, "\x08\x01"), badBody},       // a required field is missing
        {peer::rawFrame(1, "\x22\x7F\x01"), badBody}};  // a field that lies about its length
    for (const auto& [frame, diagnostic] : table) {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        std::string leftover;
        EXPECT_EQ(cut(frame + good, leftover), good);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), diagnostic + "Error in deserializing of message\n");
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    }
}

TEST(Framing, ALengthOfZeroIsNeverPassed)
{
    const std::string stuck = std::string(2, '\0') + good;
    std::string leftover;
    EXPECT_EQ(cut(good + stuck, leftover), good);
    EXPECT_EQ(cut(good, leftover), "");
    EXPECT_EQ(leftover, stuck + good);
}

TEST(Framing, TheLongestFrameArrives)
{
    // A field that nobody knows is skipped, whatever its size.
    const std::string filler = "\x7A\xF8\xFF\x03" + std::string(65528, 'x');
    const std::string longest = peer::rawFrame(3, good.substr(3) + filler);
    ASSERT_EQ(longest.size(), 2U + 65535U);
    std::string leftover;
    EXPECT_EQ(cut(longest.substr(0, 40000), leftover), "");
    EXPECT_EQ(cut(longest.substr(40000), leftover), longest);
}
