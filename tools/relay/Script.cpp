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

struct Welcomed
{
    std::uint32_t connection;
    std::uint16_t qport;
};

Welcomed firstWelcomed(const std::vector<Chunk>& recording)
{
    std::map<std::uint32_t, std::string> streams;
    for (const Chunk& chunk : recording) {
        if (isFrom(chunk, Transport::stream, Direction::toClient)) {
            std::string& stream = streams[chunk.lane.number];
            stream += chunk.bytes;
            if (const auto qport = welcomedQport(stream)) {
                return {chunk.lane.number, *qport};
            }
        }
    }
    throw std::runtime_error("no server welcomes a client in this recording");
}

/// 0, which no flow has, where the client never sent its qport.
std::uint32_t flowWith(std::uint16_t qport, const std::vector<Chunk>& recording)
{
    const auto found = std::find_if(recording.begin(), recording.end(), [qport](const Chunk& chunk) {
        return isFrom(chunk, Transport::datagrams, Direction::toServer) && carriesQport(chunk.bytes, qport);
    });
    return found == recording.end() ? 0 : found->lane.number;
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
    const Welcomed client = firstWelcomed(recording);
    const std::uint32_t flow = flowWith(client.qport, recording);
    const Duration start = connectionTime(client.connection, recording);
    Script script{client.qport, {}};
    for (const Chunk& chunk : recording) {
        const std::uint32_t number = chunk.lane.transport == Transport::stream ? client.connection : flow;
        if (isFrom(chunk, chunk.lane.transport, Direction::toClient) && chunk.lane.number == number) {
            script.lines.push_back({chunk.at - start, chunk.lane.transport, chunk.bytes});
        }
    }
    return script;
}

}  // namespace relay
