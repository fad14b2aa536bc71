#include "Common/Protobuf/Object/Object.pb.h"
#include "network/Framing.h"
#include "network/MessageSerializer.h"
#include "network/Messages.h"
#include "network/NetworkEvent.h"
#include "peer/ScriptedServer.h"
#include "tests/network/Support.h"

namespace {

using peer::rawFrame;

// The frames of the events that a run of bytes yields, joined.
std::string cut(const std::string& data, std::string& leftover)
{
    std::string frames;
    for (const auto& e : MessageSerializer::deserializeMessageArray(data.data(), data.size(), &leftover)) {
        frames += rawFrame(static_cast<unsigned char>(e->messageType), e->message->SerializeAsString());
    }
    return frames;
}

const messages::ShipState ship = {7, true, {1, 2, 3}, {1, 2, 3, 4}, 100, "Rosa", 1, 2, 3, 1000};
const std::string everyKind[] = {
    messages::infoFrame(ship),
    messages::infoFrame(messages::ShotState{8, true, {1, 2, 3}, {4, 5, 6}}),
    messages::updateFrame(3, 4, {5, 6, 7}),
    messages::destroyFrame(8),
    messages::steeringFrame(0xFE34, {{1, 2, 3, 4}, 7}).substr(framing::qportSize),
    messages::welcomeFrame({9}, 10)};

const std::string good = messages::destroyFrame(8);

}  // namespace

TEST(Framing, ASplitRunArrivesOnceAndWhole)
{
    std::string run, leftover;
    for (const std::string& frame : everyKind) {
        run += frame;
    }
    for (std::size_t split = 0; split < run.size(); ++split) {
        leftover.clear();
        const std::string first = cut(run.substr(0, split), leftover);
        EXPECT_EQ(first + leftover, run.substr(0, split));
        EXPECT_EQ(first + cut(run.substr(split) + run.substr(0, 4), leftover), run);
        EXPECT_EQ(leftover, run.substr(0, 4));
    }
    const std::string filler = "\x7A\xF8\xFF\x03" + std::string(65528, 'x');  // a field of unknown number
    const std::string longest = rawFrame(3, good.substr(3) + filler);
    leftover = longest.substr(0, 40000);
    EXPECT_EQ(cut(longest.substr(40000), leftover), longest);
}

TEST(Framing, ABadFrameIsReportedAndTheNextArrives)
{
    const std::string badType = "Unknown message type received (type byte: 0x";
    const std::string badBody = "Error in parseing message \n";
    const std::pair<std::string, std::string> table[] = {
        {rawFrame(0, "body"), badType + "0) info \n"},
        {rawFrame(255, ""), badType + "ff) info \n"},
        {rawFrame(5, "\x08\x01"), badBody},       // a required field is missing
        {rawFrame(1, "\x22\x7F\x01"), badBody}};  // a field that is shorter than its length says
    for (const auto& [frame, diagnostic] : table) {
        testing::internal::CaptureStderr();
        std::string leftover;
        EXPECT_EQ(printedBy([&, bytes = frame + good] { EXPECT_EQ(cut(bytes, leftover), good); }),
                  diagnostic + "Error in deserializing of message\n");
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    }
}
