#include "network/MessageSerializer.h"

#include "network/NetworkEvent.h"
#include "tests/network/Steering.h"
#include "tests/support/Messages.h"

#include <gtest/gtest.h>
#include <boost/make_shared.hpp>

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

std::string unknownType(const std::string& hex)
{
    return "Unknown message type received (type byte: 0x" + hex + ") info \n";
}

const std::string badBody = "Error in parseing message \n";
const std::string dropped = "Error in deserializing of message\n";

Strings oneOfEach()
{
    Vantor::ClientUpdate update = steering(1U << 30U);
    return {support::shipInfo({}), support::update(3, 4, {5, 6, 7}), support::destroy(8),
            MessageSerializer::serializeMessage(update), support::welcome(9, 10)};
}

}  // namespace

TEST(Framing, PutsLengthAndTypeInFrontOfTheBody)
{
    Vantor::PlayerData large;
    large.set_health(0);
    large.set_name(std::string(600, 'n'));
    const std::string frame = MessageSerializer::getSerializedMsg(MessageTypes::WELCOME, large);
    EXPECT_EQ(frame.substr(0, 3), std::string("\x61\x02\x05", 3)) << "609, the low byte first";
    EXPECT_EQ(frame.substr(3), large.SerializeAsString());
    for (std::size_t n = 0; n < 5; ++n) {
        EXPECT_EQ(static_cast<std::size_t>(oneOfEach()[n][2]), n + 1);
    }
}

TEST(Framing, SeveralFramesInOneRunArriveInOrder)
{
    Strings sent = oneOfEach();
    std::string run, leftover;
    for (const std::string& frame : sent) {
        run += frame;
    }
    EXPECT_EQ(cut(run, leftover), sent);
    EXPECT_EQ(leftover, "");
    EXPECT_EQ(cut("", leftover), Strings());
    EXPECT_EQ(leftover, "");
}

TEST(Framing, AFrameSplitAnywhereArrivesOnceAndWhole)
{
    for (const std::string& frame : oneOfEach()) {
        for (std::size_t split = 0; split < frame.size(); ++split) {
            std::string leftover;
            EXPECT_EQ(cut(frame.substr(0, split), leftover), Strings());
            EXPECT_EQ(leftover, frame.substr(0, split));
            EXPECT_EQ(cut(frame.substr(split) + frame + frame.substr(0, split), leftover),
                      (Strings{frame, frame}));
            EXPECT_EQ(leftover, frame.substr(0, split)) << "the next frame's beginning is kept in its turn";
        }
    }
}

TEST(Framing, ABadFrameIsReportedAndTheNextOneArrives)
{
    const std::string good = support::destroy(8);
    const struct
    {
        const char* what;
        std::string frame, diagnostic;
    } table[] = {
        {"type 0", support::frame(0, "body"), unknownType("0") + dropped},
        {"type 6", support::frame(6, "body"), unknownType("6") + dropped},
        {"type 255", support::frame(255, ""), unknownType("ff") + dropped},
        {"no body", support::frame(1, ""), badBody + dropped},
        {"a required field is missing", support::frame(5, "\x08\x01"), badBody + dropped},
        {"a body cut short", support::frame(3, "\x08"), badBody + dropped},
        {"a body of another type", support::frame(3, oneOfEach()[3].substr(3)), badBody + dropped},
        {"a field that lies about its length", support::frame(1, "\x22\x7F\x01"), badBody + dropped}};
    for (const auto& [what, frame, diagnostic] : table) {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        std::string leftover;
        EXPECT_EQ(cut(frame + good, leftover), Strings{good}) << what;
        EXPECT_EQ(leftover, "") << what;
        EXPECT_EQ(testing::internal::GetCapturedStdout(), diagnostic) << what;
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << what;
    }
}

TEST(Framing, ALengthOfZeroIsNeverPassed)
{
    const std::string good = support::destroy(8);
    const std::string stuck = std::string(2, '\0') + good;
    std::string leftover;
    EXPECT_EQ(cut(good + stuck, leftover), Strings{good});
    EXPECT_EQ(leftover, stuck);
    EXPECT_EQ(cut(good, leftover), Strings());
    EXPECT_EQ(leftover, stuck + good);
}

TEST(Framing, TheLongestFrameArrives)
{
    // A field that nobody knows is skipped, whatever its size.
    const std::string filler = "\x7A\xF8\xFF\x03" + std::string(65528, 'x');
    const std::string longest = support::frame(3, support::destroy(8).substr(3) + filler);
    ASSERT_EQ(longest.size(), 2U + 65535U);
    std::string leftover;
    EXPECT_EQ(cut(longest.substr(0, 40000), leftover), Strings());
    EXPECT_EQ(cut(longest.substr(40000), leftover), Strings{longest});
}

TEST(Framing, TheDiagnosticsNameWhereTheBytesCameFrom)
{
    auto event = boost::make_shared<NetworkEvent>();
    testing::internal::CaptureStdout();
    EXPECT_FALSE(MessageSerializer::realParsePacket("\x07", 1, event, "from here"));
    EXPECT_FALSE(MessageSerializer::realParsePacket("\x01", 1, event, "from there"));
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Unknown message type received (type byte: 0x7) info from here\n"
              "Error in parseing message from there\n");
    EXPECT_EQ(event->message, nullptr);
}
