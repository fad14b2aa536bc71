#include "server/net/PracticeServer.h"

#include "instrumentation/Logger.h"
#include "server/net/StateFrames.h"

#include <algorithm>
#include <utility>

namespace practice {

namespace {

using boost::asio::ip::tcp;
using boost::system::error_code;

constexpr std::chrono::nanoseconds stepPeriod{1'000'000'000 / Match::stepsPerSecond};
constexpr int mostStepsAtOnce = 6;             ///< then the sockets get their turn
constexpr unsigned stepsPerSnapshot = 3;       ///< 20 snapshots per second, exactly 50 ms of match time apart
constexpr std::uint64_t silentSteps = 60;      ///< a pilot unheard for a second lets go of the controls
constexpr unsigned mostWelcomesPerStep = 4;    ///< a full server is complete in a third of a second
constexpr std::uint64_t turnedAwayPause = 60;  ///< steps between two lines about it

std::string joinLine(const Ship& ship, const tcp::endpoint& from)
{
    return "join " + ship.name + (ship.team == Team::blue ? " (blue)" : " (red)") + " from " +
           from.address().to_string() + ":" + std::to_string(from.port());
}

}  // namespace

PracticeServer::PracticeServer(boost::asio::io_context& io, const ServerConfig& config_)
    : config(config_),
      ports(io, config_.port, config_.bind),
      portNumber(ports.number()),
      clientLog(config.log),
      pending(ports.acceptor, [this](const std::string& line) { say(line); }),
      stepTimer(io),
      clock(stepPeriod),
      match(config_.match),
      broadcast(match, [this](const std::string& frame) { sendToAll(frame); })
{
    match.addObserver(&broadcast);
    for (unsigned i = 0; i < config.bots; ++i) {
        match.addBot();
    }
}

void PracticeServer::start()
{
    clock.start(std::chrono::steady_clock::now());
    pending.open();
    receive();
    scheduleSteps();
}

void PracticeServer::stop()
{
    stopped = true;      // a handler that is already on its way must not start anything anew
    error_code ignored;  // closing is all we can do
    pending.close();
    ports.udp.close(ignored);
    stepTimer.cancel(ignored);
    for (const Client& client : clients) {
        client.session->close();
    }
    clients.clear();
    clientLog.tellLeftOut();
}

// Joining and leaving.

/// A full server sends everyone away at once: that costs nothing.
void PracticeServer::letIn()
{
    pending.tidy();
    for (unsigned welcomed = 0; welcomed < mostWelcomesPerStep;) {
        auto socket = pending.next();
        if (!socket) {
            return;
        }
        if (clients.size() < config.mostClients) {
            welcome(std::move(*socket));
            ++welcomed;
        } else {
            ++turnedAway;
        }
    }
}

/// One line for many, so that nobody can flood the log.
void PracticeServer::tellOfTurnedAway()
{
    if (turnedAway == 0 || match.stepCount() < turnedAwayToldAt + turnedAwayPause) {
        return;
    }
    config.log("turned away " + std::to_string(turnedAway) + " connections: all " +
               std::to_string(config.mostClients) + " places are taken");
    turnedAway = 0;
    turnedAwayToldAt = match.stepCount();
}

void PracticeServer::welcome(tcp::socket socket)
{
    auto session = std::make_shared<ClientSession>(std::move(socket), config.sendQueue);
    const ObjectId shipId = match.addHuman();  // tells the other clients
    const Ship& ship = *match.findShip(shipId);
    const std::uint16_t qport = freshQport();
    session->send(welcomeFrame(ship, qport, match));
    for (const std::string& frame : broadcast.introduction()) {
        session->send(frame);
    }
    session->flush();
    const std::uint64_t now = match.stepCount();
    clients.push_back(
        {session, shipId, ship.name, qport, now, ClientLimits(config.conduct, now), std::nullopt});
    session->start(
        [this, shipId](const framing::ClientFrame& frame) {
            Logger::getInstance()->countMessage(Logger::TCP_RECEIVED);
            Client* client = findClient(shipId);
            if (client != nullptr && client->qport == frame.qport) {
                handleFrame(*client, frame);
            }
        },
        [this, shipId](const std::string& fault) { remove(shipId, fault); });
    say(joinLine(ship, session->peer()));
}

void PracticeServer::remove(ObjectId ship, const std::string& fault)
{
    const auto gone =
        std::find_if(clients.begin(), clients.end(), [ship](const Client& c) { return c.ship == ship; });
    if (gone == clients.end()) {
        return;
    }
    say(fault.empty() ? "leave " + gone->name : "drop " + gone->name + ": " + fault);
    clients.erase(gone);
    match.removeShip(ship);
}

void PracticeServer::dropOffenders()
{
    const std::uint64_t now = match.stepCount();
    std::vector<std::pair<ObjectId, std::string>> faults;
    for (Client& client : clients) {
        client.conduct.streamBytes(client.session->takeReceivedBytes(), now);
        const std::string fault = client.conduct.fault(now);
        if (!fault.empty()) {
            client.session->close();
            faults.emplace_back(client.ship, fault);
        }
    }
    for (const auto& [ship, fault] : faults) {
        remove(ship, fault);
    }
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

/// A datagram counts only up to the first frame that does not carry its sender's qport, and one from a
/// stranger not at all, unless it is the first steering of a newcomer.
void PracticeServer::handleDatagram(std::size_t bytes)
{
    Logger::getInstance()->countPacket(Logger::UDP_RECEIVED, bytes);
    framing::ClientFrame frame;
    framing::cutClientFrame(datagram.data(), bytes, frame);
    Client* const client = findSender(frame.qport);
    if (client == nullptr) {
        return;
    }
    if (client->address) {
        client->conduct.datagram(match.stepCount());
    }
    for (std::size_t used = 0; used < bytes; used += frame.size()) {
        if (framing::cutClientFrame(datagram.data() + used, bytes - used, frame) != framing::Cut::frame) {
            if (client->address) {
                client->conduct.garbage(match.stepCount());
            }
            return;
        }
        if (frame.qport != client->qport) {
            return;
        }
        handleDatagramFrame(*client, frame);
    }
}

void PracticeServer::handleDatagramFrame(Client& client, const framing::ClientFrame& frame)
{
    Logger::getInstance()->countMessage(Logger::UDP_RECEIVED);
    const FrameMeaning meaning = handleFrame(client, frame);
    if (meaning == FrameMeaning::steering) {
        client.address = sender;
        client.conduct.steeredByDatagram(match.stepCount());
    } else if (meaning == FrameMeaning::garbage && client.address) {
        client.conduct.garbage(match.stepCount());
    }
}

template <typename Condition>
PracticeServer::Client* PracticeServer::findClient(Condition condition)
{
    const auto found = std::find_if(clients.begin(), clients.end(), condition);
    return found == clients.end() ? nullptr : &*found;
}

PracticeServer::Client* PracticeServer::findClient(ObjectId ship)
{
    return findClient([ship](const Client& c) { return c.ship == ship; });
}

/// The client of that qport, if the datagram comes from its address or, while that is not known, from the
/// host it is connected from. Else whoever has that address: one socket may play again and again, while
/// earlier connections of the same player still stand.
PracticeServer::Client* PracticeServer::findSender(std::uint16_t qport)
{
    Client* const named = findClient([this, qport](const Client& c) {
        return c.qport == qport &&
               (c.address ? *c.address == sender : c.session->peer().address() == sender.address());
    });
    return named != nullptr ? named : findClient([this](const Client& c) { return c.address == sender; });
}

FrameMeaning PracticeServer::handleFrame(Client& client, const framing::ClientFrame& frame)
{
    ShipInput input;
    const FrameMeaning meaning = readSteering(frame, input);
    if (meaning == FrameMeaning::steering) {
        match.setInput(client.ship, input);
        client.heardAt = match.stepCount();
    }
    return meaning;
}

// The clock of the match.

void PracticeServer::scheduleSteps()
{
    stepTimer.expires_at(clock.nextStep());
    stepTimer.async_wait([this](const error_code& cancelled) {
        if (!stopped && !cancelled) {
            runDueSteps();
            scheduleSteps();
        }
    });
}

void PracticeServer::runDueSteps()
{
    for (int i = 0; i < mostStepsAtOnce && clock.takeStep(std::chrono::steady_clock::now()); ++i) {
        step();
    }
}

void PracticeServer::step()
{
    match.step();
    broadcast.afterStep();
    tellResult();
    dropOffenders();
    releaseSilentPilots();
    if (match.stepCount() % stepsPerSnapshot == 0) {
        sendSnapshot();
    }
    flushAll();
    letIn();
    tellOfTurnedAway();
    clientLog.afterStep(match.stepCount());
}

void PracticeServer::tellResult()
{
    if (const auto result = match.takeResult()) {
        for (const std::string& line : scoreTable(*result)) {
            config.log(line);
        }
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
                error_code error;
                const std::size_t sent =
                    ports.udp.send_to(boost::asio::buffer(packed), *client.address, 0, error);
                if (!error) {
                    Logger::getInstance()->countPacket(Logger::UDP_SENT, sent);
                }
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

void PracticeServer::flushAll()
{
    for (const Client& client : clients) {
        client.session->flush();
    }
}

}  // namespace practice
