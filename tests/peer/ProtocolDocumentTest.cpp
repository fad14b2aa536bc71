#include "Common/Protobuf/Object/Object.pb.h"
#include "network/Framing.h"
#include "network/MessageSerializer.h"
#include "network/Messages.h"
#include "network/NetworkEvent.h"
#include "peer/ProtocolChecker.h"
#include "peer/ScriptedServer.h"

#include <google/protobuf/text_format.h>
#include <gtest/gtest.h>

#include <boost/algorithm/hex.hpp>
#include <boost/algorithm/string.hpp>
#include <boost/make_shared.hpp>

#include <fstream>

namespace {

/// A dump's "SENDER TRANSPORT MESSAGE", bytes and meaning, without blanks.
std::string joined(const std::string& title, const std::string& bytes, const std::string& meaning)
{
    std::string dump = title + '|' + bytes + '|' + meaning;
    boost::erase_all(dump, " ");
    boost::erase_all(dump, "\n");
    return dump;
}

std::string dumpOf(const std::string& way, const std::string& frame)
{
    const std::size_t start = boost::starts_with(way, "client") ? framing::qportSize : 0;
    const auto event = boost::make_shared<NetworkEvent>();
    EXPECT_TRUE(MessageSerializer::deserializeMessage(frame.substr(start + framing::lengthSize), event));
    std::string fields;
    google::protobuf::TextFormat::PrintToString(*event->message, &fields);
    const std::string qport = start == 0 ? "" : "qport: " + std::to_string(framing::uint16At(frame.data()));
    return joined(way + event->message->GetDescriptor()->name(), boost::algorithm::hex(frame),
                  qport + "length: " + std::to_string(framing::uint16At(frame.data() + start)) +
                      "type: " + std::to_string(event->messageType) + fields);
}

/// Blocks of the document: "```frame TITLE", lines "BYTES | MEANING", "```".
std::vector<std::string> documentedDumps()
{
    const std::string start = "```frame ";
    std::vector<std::string> dumps;
    std::ifstream document(VANTOR_PROTOCOL_DOCUMENT);
    for (std::string title; std::getline(document, title);) {
        if (boost::starts_with(title, start)) {
            std::string bytes, meaning;
            for (std::string line; std::getline(document, line) && line != "```";) {
                bytes += line.substr(0, line.find('|'));
                meaning += line.substr(line.find('|') + 1);
            }
            dumps.push_back(joined(title.substr(start.size()), bytes, meaning));
        }
    }
    return dumps;
}

}  // namespace

TEST(ProtocolDocument, ShowsWhatTheProgramsSend)
{
    using namespace messages;
    const Quaternion turned(0.8F, 0, 0.6F, 0);
    const std::uint64_t id = 4294967298;
    const ShipState ship{id, true, {-500, 0, 14}, turned, 87.5F, "Pilot 1", 3, -1, 4, 5000};
    const ShotState shot{id + 1, true, {-496, 0, 18.5F}, {211.25F, 0, 61.5F}, 5016};
    const std::pair<std::string, std::string> frames[] = {
        {"server tcp ", welcomeFrame(ship, 4660)},
        {"server tcp ", infoFrame(ship)},
        {"server tcp ", infoFrame(shot)},
        {"server udp ", updateFrame(id, 5050, {-497.5F, 0.25F, 14.75F}, turned)},
        {"server tcp ", destroyFrame(shot.id)},
        {"client udp ", steeringFrame(4660, {turned, 0x40000001})}};
    std::vector<std::string> sent;
    peer::ProtocolChecker checker;
    for (const auto& [way, frame] : frames) {
        sent.push_back(dumpOf(way, frame));
        if (way == "server tcp ") {
            std::string stream = frame;
            checker.receiveStream(stream);
        } else if (way == "server udp ") {
            checker.receiveDatagram({{}, {}, frame});
        } else {
            EXPECT_TRUE(peer::parseSteering(frame));
        }
    }
    EXPECT_EQ(documentedDumps(), sent);
    EXPECT_TRUE(checker.faults().empty() && checker.positions.count(id) == 1);
}
