#include "relay/Replay.h"

#include "Common/Protobuf/Object/Object.pb.h"
#include "network/Framing.h"
#include "relay/WhileOpen.h"

#include <boost/asio/write.hpp>

#include <algorithm>
#include <array>
#include <functional>
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

struct Client
{
    std::uint32_t connection;
    Duration connected;
    std::uint16_t qport;
    std::uint32_t flow = 0;  ///< of datagrams; 0, which none has, where the client never sent its qport
};

/// The clients in the order in which the server welcomed them.
std::vector<Client> welcomedClients(const std::vector<Chunk>& recording)
{
    std::map<std::uint32_t, Duration> connected;   // by connection
    std::map<std::uint32_t, std::string> starts;   // of the server's streams, up to a whole frame
    std::map<std::uint16_t, std::uint32_t> flows;  // by qport, the first flow that carried it
    std::vector<Client> clients;
    for (const auto& [at, flow, kind, bytes] : recording) {
        const bool isStream = flow.transport == Transport::stream;
        if (isStream) {
            connected.emplace(flow.number, at);
        }
        if (isStream && flow.direction == Direction::toClient) {
            std::string& start = starts[flow.number];
            const bool isNew = framing::wholeFrameLength(start.data(), start.size()) == 0;
            start += isNew ? bytes : "";
            const auto qport = isNew ? welcomedQport(start) : std::nullopt;
            if (qport) {
                clients.push_back({flow.number, connected[flow.number], *qport});
            }
        }
        const auto qport = qportOf(bytes.data(), bytes.size());
        if (!isStream && flow.direction == Direction::toServer && qport) {
            flows.emplace(*qport, flow.number);
        }
    }
    for (Client& client : clients) {
        client.flow = flows[client.qport];
    }
    return clients;
}

}  // namespace

ServerTrack readServerTrack(const std::string& path, const Warn& warn)
{
    std::vector<Chunk> recording = readRecording(path, warn);
    const std::vector<Client> clients = welcomedClients(recording);
    if (clients.empty()) {
        throw std::runtime_error(path + ": no server welcomes a client here");
    }
    const auto plays = [](const Client& client) { return client.flow != 0; };
    const auto playing = std::find_if(clients.begin(), clients.end(), plays);
    const Client& client = playing == clients.end() ? clients.front() : *playing;
    ServerTrack track{client.qport, {}};
    for (Chunk& chunk : recording) {
        const bool isStream = chunk.flow.transport == Transport::stream;
        if (chunk.kind == Chunk::Kind::bytes && chunk.flow.direction == Direction::toClient &&
            chunk.flow.number == (isStream ? client.connection : client.flow)) {
            chunk.at -= client.connected;
            track.chunks.push_back(std::move(chunk));
        }
    }
    return track;
}

/// Plays the track to one client, then hangs up.
class Replayer::Session : public WhileOpen<Session>
{
public:
    using OnEnd = std::function<void(const std::string& reason)>;

    /// `udp` and the track outlive the session.
    Session(TcpSocket client_, boost::asio::ip::udp::socket& udp_, const ServerTrack& track_, double speed_)
        : client(std::move(client_)), udp(udp_), track(track_), speed(speed_), timer(client.get_executor())
    {
        error_code ignored;  // the first receive reports a peer that has left already
        peer = client.remote_endpoint(ignored);
        client.set_option(boost::asio::ip::tcp::no_delay(true), ignored);
    }

    /// Announces the end once.
    void start(OnEnd onEnd_)
    {
        onEnd = std::move(onEnd_);
        receive();
        awaitNext();
    }

    void close()
    {
        onEnd = nullptr;
        end({});
    }

    bool isOpen() const { return state != State::ended; }

    /// The first datagram from the client's host with its qport tells its address; others are ignored.
    void handleDatagram(const Endpoint& sender, const char* data, std::size_t size)
    {
        if (!isOpen() || address || sender.address() != peer.address() ||
            qportOf(data, size) != track.qport) {
            return;
        }
        address = sender;
        if (state == State::waitingForAddress) {
            state = State::playing;
            began += Clock::now() - waitingSince;
            sendNext();
        }
    }

private:
    enum class State : std::uint8_t
    {
        playing,
        waitingForAddress,
        ended
    };

    TcpSocket client;
    boost::asio::ip::tcp::endpoint peer;
    boost::asio::ip::udp::socket& udp;
    const ServerTrack& track;
    double speed;
    boost::asio::steady_timer timer;
    OnEnd onEnd;
    State state = State::playing;
    std::optional<Endpoint> address;
    std::size_t next = 0;       ///< chunk of the track
    Time began = Clock::now();  ///< plus the time spent waiting for the address
    Time waitingSince;
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
        if (next == track.chunks.size()) {
            end("played to the end");
            return;
        }
        const std::chrono::duration<double> at = track.chunks[next].at / speed;
        timer.expires_at(began + std::chrono::duration_cast<Clock::duration>(at));
        timer.async_wait(whileOpen([this](const error_code&) { sendNext(); }));
    }

    void sendNext()
    {
        const Chunk& chunk = track.chunks[next];
        const auto bytes = boost::asio::buffer(chunk.bytes);
        if (chunk.flow.transport == Transport::stream) {
            const auto sent = [this](const error_code& error, std::size_t) { handleSent(error); };
            boost::asio::async_write(client, bytes, whileOpen(sent));
        } else if (address) {
            error_code ignored;  // lost, like any datagram
            udp.send_to(bytes, *address, 0, ignored);
            handleSent({});
        } else {
            state = State::waitingForAddress;
            waitingSince = Clock::now();
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

    void end(const std::string& reason)
    {
        state = State::ended;
        error_code ignored;  // closing is all we can do
        timer.cancel(ignored);
        client.close(ignored);
        if (const OnEnd announce = std::exchange(onEnd, nullptr)) {
            announce(reason);
        }
    }
};

Replayer::Replayer(boost::asio::io_context& io, std::uint16_t port, ServerTrack track_, double speed_,
                   LogOnce::Log log_)
    : Listener(io, port, log_), track(std::move(track_)), speed(speed_), log(std::move(log_)), refused(log)
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
    const std::string name = "client " + std::to_string(++sessionCount);
    log(name + ": connected");
    session = std::make_shared<Session>(std::move(socket), udp(), track, speed);
    session->start([this, name](const std::string& reason) { log(name + ": " + reason); });
}

void Replayer::handleDatagram(const Endpoint& client, const char* data, std::size_t size)
{
    if (session != nullptr) {
        session->handleDatagram(client, data, size);
    }
}

}  // namespace relay
