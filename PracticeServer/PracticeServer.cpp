#include "PracticeServer/PracticeServer.h"

#include "PracticeServer/ScoreTable.h"
#include "PracticeServer/StateFrames.h"

#include <algorithm>
#include <utility>

namespace practice {

namespace {

using boost::asio::ip::tcp;
using boost::system::error_code;

constexpr std::chrono::nanoseconds stepPeriod{1'000'000'000 / Match::stepsPerSecond};
constexpr int mostStepsAtOnce = 6;  ///< 0.1 s; a server held up for longer lets the match lose that time
constexpr unsigned stepsPerSnapshot = 3;   ///< 20 snapshots per second, exactly 50 ms of match time apart
constexpr std::uint64_t silentSteps = 60;  ///< a pilot unheard for a second lets go of the controls
constexpr std::chrono::milliseconds acceptRetry{
    200};  ///< when no connection can be taken, as without descriptors

}  // namespace

PracticeServer::PracticeServer(boost::asio::io_context& io, const ServerConfig& config_)
    : config(config_),
      ports(io, config_.port),
      portNumber(ports.number()),
      stepTimer(io),
      acceptPause(io),
      match(MatchSettings{config_.seed}),
      broadcast(match, [this](const std::string& frame) { sendToAll(frame); })
{
    match.addObserver(&broadcast);
    match.addObserver(&mirror);
    for (unsigned i = 0; i < config.bots; ++i) {
        match.addBot();
    }
}

void PracticeServer::start()
{
    nextStep = std::chrono::steady_clock::now() + stepPeriod;
    accept();
    receive();
    scheduleSteps();
}

void PracticeServer::stop()
{
    stopped = true;      // a handler that is already on its way must not start anything anew
    error_code ignored;  // closing is all we can do
    ports.acceptor.close(ignored);
    ports.udp.close(ignored);
    stepTimer.cancel(ignored);
    acceptPause.cancel(ignored);
    for (const Client& client : clients) {
        client.session->close();
    }
    clients.clear();
}

// Joining and leaving.

void PracticeServer::accept()
{
    ports.acceptor.async_accept([this](const error_code& error, tcp::socket socket) {
        if (!stopped) {
            handleAccept(error, std::move(socket));
        }
    });
}

void PracticeServer::handleAccept(const error_code& error, tcp::socket socket)
{
    if (error) {
        acceptPause.expires_after(acceptRetry);
        acceptPause.async_wait([this](const error_code& cancelled) {
            if (!stopped && !cancelled) {
                accept();
            }
        });
        return;
    }
    if (clients.size() < config.mostClients) {
        welcome(std::move(socket));
    } else {
        config.log("turned away a player: all " + std::to_string(config.mostClients) + " places are taken");
    }
    accept();
}

void PracticeServer::welcome(tcp::socket socket)
{
    auto session = std::make_shared<ClientSession>(std::move(socket));
    const ObjectId shipId = match.addHuman();  // tells the other clients
    const Ship& ship = *match.findShip(shipId);
    const std::uint16_t qport = freshQport();
    session->send(welcomeFrame(ship, qport, match));
    for (const std::string& frame : broadcast.introduction()) {
        session->send(frame);
    }
    clients.push_back({session, shipId, ship.name, qport, match.stepCount(), std::nullopt});
    session->start(
        [this, shipId](const ClientFrame& frame) {
            Client* client = findClient(shipId);
            if (client != nullptr && client->qport == frame.qport) {
                handleFrame(*client, frame);
            }
        },
        [this, shipId](const std::string& fault) { remove(shipId, fault); });
    config.log("join " + ship.name + (ship.team == Team::blue ? " (blue)" : " (red)"));
}

void PracticeServer::remove(ObjectId ship, const std::string& fault)
{
    const auto gone =
        std::find_if(clients.begin(), clients.end(), [ship](const Client& c) { return c.ship == ship; });
    if (gone == clients.end()) {
        return;
    }
    config.log(fault.empty() ? "leave " + gone->name : "drop " + gone->name + ": " + fault);
    clients.erase(gone);
    match.removeShip(ship);
}

/// Never 0, which a client sends before its welcome, and never one in use.
std::uint16_t PracticeServer::freshQport()
{
    for (;;) {
        const auto qport = static_cast<std::uint16_t>(qportSource());
        const bool used = std::any_of(clients.begin(), clients.end(),
                                      [qport](const Client& c) { return c.qport == qport; });
        if (qport != 0 && !used) {
            return qport;
        }
    }
}

// Receiving.

void PracticeServer::receive()
{
    ports.udp.async_receive_from(boost::asio::buffer(datagram), sender,
                                 [this](const error_code& error, std::size_t bytes) {
                                     if (stopped) {
                                         return;
                                     }
                                     if (!error) {
                                         handleDatagram(bytes);
                                     }
                                     receive();
                                 });
}

/// A datagram counts only up to the first frame that is not from the client whose qport it carries.
void PracticeServer::handleDatagram(std::size_t bytes)
{
    std::size_t used = 0;
    ClientFrame frame;
    while (cutClientFrame(datagram.data() + used, bytes - used, frame) == CutResult::frame) {
        Client* client = findSender(frame);
        if (client == nullptr) {
            return;
        }
        if (handleFrame(*client, frame)) {
            client->address = sender;
        }
        used += frame.size();
    }
}

/// The client with the frame's qport, if the datagram can be its own: the address it has used so far, or
/// before its first datagram the host it is connected from.
PracticeServer::Client* PracticeServer::findSender(const ClientFrame& frame)
{
    const auto found =
        std::find_if(clients.begin(), clients.end(), [&](const Client& c) { return c.qport == frame.qport; });
    if (found == clients.end()) {
        return nullptr;
    }
    const bool own =
        found->address ? *found->address == sender : found->session->peer().address() == sender.address();
    return own ? &*found : nullptr;
}

PracticeServer::Client* PracticeServer::findClient(ObjectId ship)
{
    const auto found =
        std::find_if(clients.begin(), clients.end(), [ship](const Client& c) { return c.ship == ship; });
    return found == clients.end() ? nullptr : &*found;
}

/// False, and nothing has changed, unless the frame holds valid steering.
bool PracticeServer::handleFrame(Client& client, const ClientFrame& frame)
{
    const std::optional<ShipInput> input = readSteering(frame);
    if (!input) {
        return false;
    }
    match.setInput(client.ship, *input);
    client.heardAt = match.stepCount();
    return true;
}

// The clock of the match.

void PracticeServer::scheduleSteps()
{
    stepTimer.expires_at(nextStep);
    stepTimer.async_wait([this](const error_code& cancelled) {
        if (!stopped && !cancelled) {
            runDueSteps();
            scheduleSteps();
        }
    });
}

void PracticeServer::runDueSteps()
{
    const auto now = std::chrono::steady_clock::now();
    for (int i = 0; i < mostStepsAtOnce && nextStep <= now; ++i) {
        step();
        nextStep += stepPeriod;
    }
    if (nextStep <= now) {
        nextStep = now + stepPeriod;
    }
}

void PracticeServer::step()
{
    match.step();
    SceneMirror::apply();
    broadcast.afterStep();
    if (const auto result = match.takeResult()) {
        for (const std::string& line : scoreTable(*result)) {
            config.log(line);
        }
    }
    releaseSilentPilots();
    if (match.stepCount() % stepsPerSnapshot == 0) {
        sendSnapshot();
    }
}

void PracticeServer::releaseSilentPilots()
{
    for (const Client& client : clients) {
        if (match.stepCount() - client.heardAt == silentSteps) {
            match.releaseControls(client.ship);
        }
    }
}

/// A datagram that the system does not take at once is lost like any other: the next snapshot replaces it.
void PracticeServer::sendSnapshot()
{
    for (const std::string& packed : broadcast.takeSnapshot()) {
        for (const Client& client : clients) {
            if (client.address) {
                error_code ignored;
                ports.udp.send_to(boost::asio::buffer(packed), *client.address, 0, ignored);
            }
        }
    }
}

void PracticeServer::sendToAll(const std::string& frame)
{
    for (const Client& client : clients) {
        client.session->send(frame);
    }
}

}  // namespace practice
