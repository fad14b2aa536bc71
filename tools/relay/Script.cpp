#include "tools/relay/Script.h"

#include "Common/Protobuf/Object/Object.pb.h"
#include "network/Framing.h"
#include "network/MessageTypes.h"

#include <algorithm>
#include <map>
#include <optional>
#include <stdexcept>

namespace relay {

namespace {

constexpr std::size_t largestFrame = framing::lengthSize + 65535;

bool isFrom(const Chunk& chunk, Transport transport, Direction direction)
{
    return chunk.kind == Chunk::Kind::bytes && chunk.lane.transport == transport &&
           chunk.lane.direction == direction;
}

/// The qport in the stream's first frame, which is a Welcome; nothing where that is not whole, or no Welcome.
std::optional<std::uint16_t> welcomedQport(const std::string& stream)
{
    const std::size_t length = framing::wholeFrameLength(stream.data(), stream.size());
    const char* const frame = stream.data() + framing::lengthSize;
    Vantor::Welcome welcome;
    // A partial parse, because the full one complains on standard error about every missing field.
    if (length == 0 || frame[0] != static_cast<char>(MessageTypes::WELCOME) ||
        !welcome.ParsePartialFromArray(frame + 1, static_cast<int>(length) - 1) || !welcome.has_qport()) {
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
    std::map<std::uint32_t, std::string>
        starts;  ///< of the streams, by connection, until their Welcome is whole
    std::vector<Player> players;
    for (const Chunk& chunk : recording) {
        std::string& start = starts[chunk.lane.number];
        if (!isFrom(chunk, Transport::stream, Direction::toClient) || start.size() > largestFrame) {
            continue;
        }
        start += chunk.bytes;
        if (const auto qport = welcomedQport(start)) {
            players.push_back({chunk.lane.number, *qport, 0});
            start.resize(largestFrame + 1);  // no more of this one
        }
    }
    return players;
}

std::uint32_t flowWith(std::uint16_t qport, const std::vector<Chunk>& recording)
{
    const auto found = std::find_if(recording.begin(), recording.end(), [qport](const Chunk& chunk) {
        return isFrom(chunk, Transport::datagrams, Direction::toServer) && carriesQport(chunk.bytes, qport);
    });
    return found == recording.end() ? 0 : found->lane.number;
}

/// The first one that played; where none did, the first one that watched.
Player firstPlayer(const std::vector<Chunk>& recording)
{
    std::vector<Player> players = welcomedPlayers(recording);
    if (players.empty()) {
        throw std::runtime_error("no server welcomes a client in this recording");
    }
    const auto plays = [&recording](Player& player) {
        player.flow = flowWith(player.qport, recording);
        return player.flow != 0;
    };
    const auto found = std::find_if(players.begin(), players.end(), plays);
    return found == players.end() ? players.front() : *found;
}

Duration connectionTime(std::uint32_t connection, const std::vector<Chunk>& recording)
{
    const auto first = std::find_if(recording.begin(), recording.end(), [connection](const Chunk& chunk) {
        return chunk.lane.transport == Transport::stream && chunk.lane.number == connection;
    });
    return first->at;
}

}  // namespace

bool carriesQport(const std::string& datagram, std::uint16_t qport)
{
    return datagram.size() >= 2 && static_cast<unsigned char>(datagram[0]) == (qport & 0xFFU) &&
           static_cast<unsigned char>(datagram[1]) == qport >> 8U;
}

Script serverSide(const std::vector<Chunk>& recording)
{
    const Player client = firstPlayer(recording);
    const Duration start = connectionTime(client.connection, recording);
    Script script{client.qport, {}};
    for (const Chunk& chunk : recording) {
        const std::uint32_t number =
            chunk.lane.transport == Transport::stream ? client.connection : client.flow;
        if (isFrom(chunk, chunk.lane.transport, Direction::toClient) && chunk.lane.number == number) {
            script.lines.push_back({chunk.at - start, chunk.lane.transport, chunk.bytes});
        }
    }
    return script;
}

}  // namespace relay
