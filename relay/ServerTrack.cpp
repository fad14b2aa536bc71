#include "relay/ServerTrack.h"

#include "Common/Protobuf/Object/Object.pb.h"
#include "network/Framing.h"
#include "network/MessageTypes.h"

#include <algorithm>
#include <map>
#include <stdexcept>

namespace relay {

namespace {

bool isFrom(const Chunk& chunk, Transport transport, Direction direction)
{
    return chunk.kind == Chunk::Kind::bytes && chunk.flow.transport == transport &&
           chunk.flow.direction == direction;
}

bool holdsAFrame(const std::string& stream)
{
    return stream.size() >= framing::lengthSize &&
           stream.size() - framing::lengthSize >= framing::uint16At(stream.data());
}

/// The qport in the stream's first frame; nothing where that is no Welcome.
std::optional<std::uint16_t> welcomedQport(const std::string& stream)
{
    const std::size_t length = framing::wholeFrameLength(stream.data(), stream.size());
    const char* const frame = stream.data() + framing::lengthSize;
    Vantor::Welcome welcome;
    if (length == 0 || frame[0] != static_cast<char>(MessageTypes::WELCOME) ||
        !framing::parseBody(welcome, frame + 1, length - 1)) {
        return std::nullopt;
    }
    return static_cast<std::uint16_t>(welcome.qport());
}

struct Player
{
    std::uint32_t connection;
    std::uint16_t qport;
    std::uint32_t flow;  ///< of datagrams; 0, which none has, where the player never sent the qport
};

std::vector<Player> welcomedPlayers(const std::vector<Chunk>& recording)
{
    std::map<std::uint32_t, std::string> starts;  // of the streams, by connection
    std::vector<Player> players;
    for (const Chunk& chunk : recording) {
        if (!isFrom(chunk, Transport::stream, Direction::toClient)) {
            continue;
        }
        std::string& start = starts[chunk.flow.number];
        if (holdsAFrame(start)) {
            continue;
        }
        start += chunk.bytes;
        const auto qport = holdsAFrame(start) ? welcomedQport(start) : std::nullopt;
        if (qport) {
            players.push_back({chunk.flow.number, *qport, 0});
        }
    }
    return players;
}

/// By qport, the first flow that carried it.
std::map<std::uint16_t, std::uint32_t> flowsByQport(const std::vector<Chunk>& recording)
{
    std::map<std::uint16_t, std::uint32_t> flows;
    for (const Chunk& chunk : recording) {
        const auto qport = qportOf(chunk.bytes);
        if (qport && isFrom(chunk, Transport::datagrams, Direction::toServer)) {
            flows.emplace(*qport, chunk.flow.number);
        }
    }
    return flows;
}

/// The first one that played; where none did, the first one that watched.
Player firstPlayer(const std::vector<Chunk>& recording)
{
    std::vector<Player> players = welcomedPlayers(recording);
    if (players.empty()) {
        throw std::runtime_error("no server welcomes a client here");
    }
    const auto flows = flowsByQport(recording);
    const auto plays = [&flows](Player& player) {
        const auto flow = flows.find(player.qport);
        player.flow = flow == flows.end() ? 0 : flow->second;
        return player.flow != 0;
    };
    const auto found = std::find_if(players.begin(), players.end(), plays);
    return found == players.end() ? players.front() : *found;
}

Duration connectionTime(std::uint32_t connection, const std::vector<Chunk>& recording)
{
    const auto first = std::find_if(recording.begin(), recording.end(), [connection](const Chunk& chunk) {
        return chunk.flow.transport == Transport::stream && chunk.flow.number == connection;
    });
    return first->at;
}

}  // namespace

std::optional<std::uint16_t> qportOf(const std::string& datagram)
{
    if (datagram.size() < 2) {
        return std::nullopt;
    }
    return framing::uint16At(datagram.data());
}

ServerTrack serverSide(const std::vector<Chunk>& recording)
{
    const Player client = firstPlayer(recording);
    const Duration start = connectionTime(client.connection, recording);
    ServerTrack script{client.qport, {}};
    for (const Chunk& chunk : recording) {
        const std::uint32_t number =
            chunk.flow.transport == Transport::stream ? client.connection : client.flow;
        if (isFrom(chunk, chunk.flow.transport, Direction::toClient) && chunk.flow.number == number) {
            script.lines.push_back({chunk.at - start, chunk.flow.transport, chunk.bytes});
        }
    }
    return script;
}

}  // namespace relay
