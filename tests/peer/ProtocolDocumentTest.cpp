#include "network/Framing.h"
#include "network/Messages.h"
#include "peer/ProtocolChecker.h"

#include <google/protobuf/text_format.h>
#include <gtest/gtest.h>

#include <boost/algorithm/hex.hpp>
#include <boost/algorithm/string.hpp>

#include <fstream>
#include <memory>

namespace {

using boost::algorithm::hex;

std::string encodeHeader(const std::string& meaning)
{
    std::string bytes;
    framing::appendUint16(bytes, static_cast<std::uint16_t>(std::stoul(meaning.substr(meaning.find(' ')))));
    return boost::starts_with(meaning, "type:") ? bytes.substr(0, 1) : bytes;
}

/// Encodes the message that protobuf's text format describes; fields may be missing.
std::string encode(const std::string& messageName, const std::string& text)
{
    using namespace google::protobuf;
    const Descriptor* type = Vantor::Welcome::descriptor()->file()->FindMessageTypeByName(messageName);
    const std::unique_ptr<Message> message(MessageFactory::generated_factory()->GetPrototype(type)->New());
    TextFormat::Parser parser;
    parser.AllowPartialMessage(true);
    EXPECT_TRUE(parser.ParseFromString(text, message.get())) << text;
    return message->SerializePartialAsString();
}

/// The title and the bytes of a block of the document: "```frame SENDER TRANSPORT MESSAGE", lines
/// "BYTES | MEANING", "```".
using Dump = std::pair<std::string, std::string>;

/// Reads a dump's lines and compares the bytes of each with the encoding of its meaning.
Dump readDump(std::istream& document, const std::string& title)
{
    std::string frame;
    const std::size_t headerSize = boost::starts_with(title, "client") ? 5 : 3;
    std::vector<std::string> enclosing;  // "name {" of each message around the line
    for (std::string line; std::getline(document, line) && line != "```";) {
        const std::size_t bar = line.find('|');
        const std::string bytes = boost::algorithm::unhex(boost::erase_all_copy(line.substr(0, bar), " "));
        const std::string meaning = boost::trim_copy(line.substr(bar + 1));
        if (frame.size() < headerSize) {
            EXPECT_EQ(hex(bytes), hex(encodeHeader(meaning))) << meaning;
        } else if (meaning == "}") {
            enclosing.pop_back();
        } else if (boost::ends_with(meaning, "{")) {
            enclosing.push_back(meaning);
        } else {
            const std::string text =
                boost::join(enclosing, "") + meaning + std::string(enclosing.size(), '}');
            const std::string encoded = encode(title.substr(title.rfind(' ') + 1), text);
            // Each message around the field puts its key and its size in front, a byte each.
            EXPECT_EQ(hex(bytes), hex(encoded.substr(2 * enclosing.size()))) << meaning;
        }
        frame += bytes;
    }
    return {title, frame};
}

std::vector<Dump> readDumps()
{
    const std::string start = "```frame ";
    std::vector<Dump> dumps;
    std::ifstream document(VANTOR_PROTOCOL_DOCUMENT);
    for (std::string line; std::getline(document, line);) {
        if (boost::starts_with(line, start)) {
            dumps.push_back(readDump(document, line.substr(start.size())));
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
    const std::vector<Dump> sent = {
        {"server tcp Welcome", welcomeFrame(ship, 4660)},
        {"server tcp ObjectInfo", infoFrame(ship)},
        {"server tcp ObjectInfo", infoFrame(shot)},
        {"server udp ObjectUpdate", updateFrame(id, 5050, {-497.5F, 0.25F, 14.75F}, turned)},
        {"server tcp ObjectDestroy", destroyFrame(shot.id)},
        {"client udp ClientUpdate", steeringFrame(4660, {turned, 0x40000001})}};
    EXPECT_EQ(readDumps(), sent);
}

TEST(ProtocolDocument, ShowsWhatTheProgramsRead)
{
    peer::ProtocolChecker client;
    std::string stream;
    std::string fromClient;
    for (const auto& [title, bytes] : readDumps()) {
        if (boost::starts_with(title, "server udp")) {
            client.receiveDatagram({peer::Clock::now(), {}, bytes});
        } else {
            (boost::starts_with(title, "client") ? fromClient : stream) += bytes;
            client.receiveStream(stream);
        }
    }
    EXPECT_EQ(stream, "") << "half a frame";
    EXPECT_TRUE(client.faults().empty()) << client.faults().begin()->first;
    framing::ClientFrame frame;
    ASSERT_EQ(framing::cutClientFrame(fromClient.data(), fromClient.size(), frame), framing::Cut::frame);
    const auto steering = messages::readSteering(frame);
    EXPECT_EQ(messages::steeringFrame(frame.qport, steering.value()), fromClient);
}
