#include "relay/Replay.h"

#include "Common/Protobuf/Object/Object.pb.h"
#include "network/Framing.h"
#include "relay/Connection.h"

#include <boost/asio/write.hpp>

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <stdexcept>
#include <utility>

namespace relay {

using boost::system::error_code;

namespace {

/// Whether a client's datagram begins with the qport.
std::optional<std::uint16_t> qportOf(const char* data, std::size_t size)
{
    return size < framing::qportSize ? std::nullopt : std::optional(framing::uint16At(data));
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

Duration timeOf(const Chunk& chunk)
{
    return Duration(static_cast<Duration::rep>(chunk.microseconds()));
}

struct Client
{
    Duration connected;
    std::string start;  ///< of the server's stream: at least its first frame
    std::optional<std::uint16_t> qport;
    std::uint32_t flow = 0;  ///< of its datagrams, from 1; 0: it never sent its qport
};

/// The clients by the numbers of their connections.
std::map<std::uint32_t, Client> clientsIn(const std::vector<Chunk>& recording)
{
    std::map<std::uint32_t, Client> clients;
    std::map<std::uint16_t, std::uint32_t> flows;  // by qport, the first flow that carried it
    for (const Chunk& chunk : recording) {
        const std::string& bytes = chunk.bytes();
        const bool isFromServer = chunk.direction() == Chunk::TO_CLIENT;
        if (chunk.transport() == Chunk::STREAM) {
            std::string& start =
                clients.try_emplace(chunk.number(), Client{timeOf(chunk), {}, {}}).first->second.start;
            const bool isWhole = framing::wholeFrameLength(start.data(), start.size()) > 0;
            start += isFromServer && !isWhole ? bytes : "";
        } else if (const auto qport = qportOf(bytes.data(), bytes.size()); qport && !isFromServer) {
            flows.emplace(*qport, chunk.number());
        }
    }
    for (auto& [number, client] : clients) {
        client.qport = welcomedQport(client.start);
        client.flow = client.qport ? flows[*client.qport] : 0;
    }
    return clients;
}

}  // namespace

ServerTrack readServerTrack(const std::string& path, const Warn& warn)
{
    std::vector<Chunk> recording = readRecording(path, warn);
    const auto clients = clientsIn(recording);
    const auto first = [&clients](const auto& condition) {
        return std::find_if(clients.begin(), clients.end(), condition);
    };
    const auto player = first([](const auto& entry) { return entry.second.flow != 0; });
    const auto welcomed = first([](const auto& entry) { return entry.second.qport.has_value(); });
    if (welcomed == clients.end()) {
        throw std::runtime_error(path + ": no server welcomes a client here");
    }
    const auto& [connection, client] = player == clients.end() ? *welcomed : *player;
    ServerTrack track{*client.qport, {}};
    for (Chunk& chunk : recording) {
        const bool isStream = chunk.transport() == Chunk::STREAM;
        if (chunk.kind() == Chunk::BYTES && chunk.direction() == Chunk::TO_CLIENT &&
            chunk.number() == (isStream ? connection : client.flow)) {
            track.pieces.push_back({timeOf(chunk) - client.connected, Transport(chunk.transport()),
                                    std::move(*chunk.mutable_bytes())});
        }
    }
    return track;
}

/// Plays the track to one client, then hangs up.
class Replayer::Session final : public Connection
{
public:
    /// `udp` and the track outlive the session.
    Session(TcpSocket client_, boost::asio::ip::udp::socket& udp_, const ServerTrack& track_, double speed_,
            std::chrono::seconds patience_, const std::string& name_, const LogOnce::Log& log_)
        : Connection(name_, log_),
          client(std::move(client_)),
          udp(udp_),
          track(track_),
          speed(speed_),
          patience(patience_),
          timer(client.get_executor())
    {
        error_code ignored;  // the first receive reports a peer that has left already
        peer = client.remote_endpoint(ignored);
        client.set_option(boost::asio::ip::tcp::no_delay(true), ignored);
    }

    void start()
    {
        log("connected");
        receive();
        awaitNext();
    }

    /// The first datagram from the client's host with its qport tells its address; others are ignored.
    void handleDatagram(const Endpoint& sender, const char* data, std::size_t size)
    {
        if (!isOpen() || address || sender.address() != peer.address() ||
            qportOf(data, size) != track.qport) {
            return;
        }
        address = sender;
        if (waitingSince) {
            timer.cancel();
            began += Clock::now() - *waitingSince;
            sendNext();
        }
    }

private:
    TcpSocket client;
    boost::asio::ip::tcp::endpoint peer;
    boost::asio::ip::udp::socket& udp;
    const ServerTrack& track;
    double speed;
    std::chrono::seconds patience;
    boost::asio::steady_timer timer;
    std::optional<Endpoint> address;
    std::optional<Time> waitingSince;  ///< for the address
    std::size_t next = 0;              ///< piece of the track
    Time began = Clock::now();         ///< plus the time spent waiting for the address
    std::array<char, 2048> received{};

    /// Ignores the client's stream, but notices its end.
    void receive()
    {
        client.async_receive(boost::asio::buffer(received),
                             whileOpen([this](const error_code& error, std::size_t) {
                                 if (error) {
                                     end("left");
                                 } else {
                                     receive();
                                 }
                             }));
    }

    void awaitNext()
    {
        if (next == track.pieces.size()) {
            end("played to the end");
            return;
        }
        const std::chrono::duration<double> at = track.pieces[next].at / speed;
        timer.expires_at(began + std::chrono::duration_cast<Clock::duration>(at));
        timer.async_wait(whileOpen([this](const error_code&) { sendNext(); }));
    }

    void sendNext()
    {
        const ServerTrack::Piece& piece = track.pieces[next];
        const auto bytes = boost::asio::buffer(piece.bytes);
        if (piece.transport == Transport::stream) {
            const auto sent = [this](const error_code& error, std::size_t) { handleSent(error); };
            boost::asio::async_write(client, bytes, whileOpen(sent));
        } else if (address) {
            error_code ignored;  // lost, like any datagram
            udp.send_to(bytes, *address, 0, ignored);
            handleSent({});
        } else {
            waitingSince = Clock::now();
            timer.expires_after(patience);
            timer.async_wait(whileOpen([this](const error_code& cancelled) {
                if (!cancelled) {
                    end("sent no datagram for " + std::to_string(patience.count()) + " s");
                }
            }));
        }
    }

    void handleSent(const error_code& error)
    {
        if (error) {
            end("left");
            return;
        }
        ++next;
        awaitNext();
    }

    void hangUp() override
    {
        error_code ignored;  // closing is all we can do
        timer.cancel(ignored);
        client.close(ignored);
    }
};

Replayer::Replayer(boost::asio::io_context& io, std::uint16_t port, ServerTrack track_, double speed_,
                   LogOnce::Log log_, std::chrono::seconds patience_)
    : Listener(io, port, log_),
      track(std::move(track_)),
      speed(speed_),
      patience(patience_),
      log(std::move(log_)),
      refused(log)
{
}

void Replayer::stop()
{
    Listener::stop();
    if (session != nullptr) {
        session->close();
        session.reset();
    }
}

void Replayer::handleConnection(TcpSocket socket)
{
    if (session != nullptr && session->isOpen()) {
        refused.log("turning away clients: another one is watching");
        return;
    }
    refused.clear();
    session = std::make_shared<Session>(std::move(socket), udp(), track, speed, patience,
                                        "client " + std::to_string(++sessionCount), log);
    session->start();
}

void Replayer::handleDatagram(const Endpoint& client, const char* data, std::size_t size)
{
    if (session != nullptr) {
        session->handleDatagram(client, data, size);
    }
}

}  // namespace relay
