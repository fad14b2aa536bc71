#include "server/net/PracticeServer.h"

#include "instrumentation/Logger.h"

#include <algorithm>
#include <utility>

namespace practice {

namespace {

using boost::asio::ip::tcp;
using boost::system::error_code;

constexpr std::chrono::nanoseconds stepPeriod{1'000'000'000 / Match::stepsPerSecond};
constexpr int mostStepsAtOnce = 6;           ///< then the sockets get their turn
constexpr unsigned stepsPerSnapshot = 3;     ///< 20 snapshots a second, exactly 50 ms of match time apart
constexpr std::uint64_t silentSteps = 60;    ///< after a second without steering the controls are released
constexpr int mostAcceptsPerStep = 128;      ///< more wait in the system's queue
constexpr unsigned mostWelcomesPerStep = 4;  ///< fills the server in a third of a second

std::string joinLine(const Ship& ship, const tcp::endpoint& from)
{
    return "join " + ship.name + (ship.team == Team::blue ? " (blue)" : " (red)") + " from " +
           from.address().to_string() + ":" + std::to_string(from.port());
}

bool hasHungUp(tcp::socket& socket)
{
    char first = 0;
    error_code error;
    socket.remote_endpoint(error);
    if (error) {
        return true;  // reset; bytes sent before that could still be read
    }
    socket.non_blocking(true, error);
    if (error) {
        return true;  // the receive would block
    }
    socket.receive(boost::asio::buffer(&first, 1), tcp::socket::message_peek, error);
    return error && error != boost::asio::error::would_block;
}

}  // namespace

PracticeServer::PracticeServer(boost::asio::io_context& io, const ServerConfig& config_)
    : config(config_),
      ports(io, config_.port, config_.bind),
      admission(config.mostClients, config.placesPerAddress),
      clientLog(config.log, {10, 80, 0}),  // a full server may join or leave at once
      turnedAwayLog(config.log, {1, 1, 0}),
      guessLog(config.log, {1, 1, 0}),
      acceptErrors([this](const std::string& line) { clientLog.log(line, match.stepCount()); }),
      stepTimer(io),
      clock(stepPeriod),
      match(config_.match),
      broadcast(match, [this](const std::string& frame) {
          for (const Client& client : clients) {
              client.session->send(frame);
          }
      })
{
    ports.acceptor.non_blocking(true);
    match.addObserver(&broadcast);
    for (unsigned i = 0; i < config.bots; ++i) {
        match.addBot();
    }
}

void PracticeServer::start()
{
    clock.start(std::chrono::steady_clock::now());
    receive();
    scheduleSteps();
}

/// Handlers that are due already still run; they do nothing once the UDP socket is closed.
void PracticeServer::stop()
{
    error_code ignored;  // closing is all we can do
    ports.acceptor.close(ignored);
    ports.udp.close(ignored);
    stepTimer.cancel(ignored);
    for (const Client& client : clients) {
        client.session->close();
    }
    clients.clear();
    clientLog.flush();
    match.endMatch();
    logResult();
}

// Joining and leaving.

/// Connections wait in the system's queue until a step takes them. Only welcomes count towards a step's few
/// places. So connections that hung up, or that a full server rejects, delay nobody behind them.
void PracticeServer::acceptConnections()
{
    unsigned welcomed = 0;
    for (int i = 0; i < mostAcceptsPerStep && welcomed < mostWelcomesPerStep; ++i) {
        error_code error;
        tcp::socket socket = ports.acceptor.accept(error);
        if (error == boost::asio::error::would_block) {
            return;
        }
        if (error) {
            acceptErrors.log("cannot accept a connection: " + error.message());
            return;
        }
        acceptErrors.clear();
        if (hasHungUp(socket)) {
            continue;
        }
        const auto host = socket.remote_endpoint(error).address();
        const std::string reason = admission.reasonToTurnAway(host);
        if (reason.empty()) {
            welcome(std::move(socket));
            ++welcomed;
        } else {
            turnedAwayLog.log("turn away " + host.to_string() + ": " + reason, match.stepCount());
            ++counted["turned away"];
        }
    }
}

void PracticeServer::welcome(tcp::socket socket)
{
    auto session = std::make_shared<ClientSession>(std::move(socket));
    const ObjectId shipId = match.addHuman();  // announces the ship to the other clients
    const Ship& ship = *match.findShip(shipId);
    const std::uint16_t qport = freshQport();
    const std::uint64_t now = match.stepCount();
    admission.add(qport, session->peer().address(), now);
    session->send(welcomeFrame(ship, qport, match));
    introduce(*session);
    clientLog.log(joinLine(ship, session->peer()), now);
    Client& client = clients.emplace_back(Client{session, shipId, qport, now, {config.limits, now}});
    session->start([this, &client](const framing::ClientFrame& frame) {
        Logger::getInstance()->countMessage(Logger::TCP_RECEIVED);
        if (client.qport == frame.qport) {
            handleFrame(client, frame);
        }
    });
}

/// Sends the world to a client: when it joins, and again when it begins to play. While it loads its models,
/// messages pile up. It then takes them all in one frame, and loses the ships that died and returned.
void PracticeServer::introduce(ClientSession& session)
{
    for (const std::string& frame : broadcast.introduction()) {
        session.send(frame);
    }
    session.flush();
}

/// The only place where clients leave a running match.
void PracticeServer::removeLeavers()
{
    for (auto client = clients.begin(); client != clients.end();) {
        const std::string line = leaveLine(*client);
        if (line.empty()) {
            ++client;
            continue;
        }
        clientLog.log(line, match.stepCount());
        client->session->close();
        admission.remove(client->qport);
        const ObjectId ship = client->ship;
        client = clients.erase(client);
        match.removeShip(ship);
    }
}

/// The log's line about a client that has left or must leave; empty if it stays.
std::string PracticeServer::leaveLine(Client& client)
{
    const std::string& name = match.findShip(client.ship)->name;
    client.limits.receivedStream(client.session->takeReceivedBytes(), match.stepCount());
    if (client.session->state() == ClientSession::State::hungUp) {
        return "leave " + name;
    }
    const bool isCutOff = client.session->state() == ClientSession::State::cutOff;
    const std::string reason =
        isCutOff ? client.session->cutOffReason() : client.limits.reasonToDrop(match.stepCount());
    counted["drops"] += reason.empty() ? 0U : 1U;
    return reason.empty() ? "" : "drop " + name + ": " + reason;
}

/// Never 0, which a client sends before its welcome, and never one in use.
std::uint16_t PracticeServer::freshQport()
{
    for (;;) {
        const auto qport = static_cast<std::uint16_t>(config.random());
        if (qport != 0 && !admission.isTaken(qport)) {
            return qport;
        }
    }
}

// Receiving.

void PracticeServer::receive()
{
    ports.udp.async_receive_from(boost::asio::buffer(datagram), sender,
                                 [this](const error_code& error, std::size_t bytes) {
                                     if (!isRunning()) {
                                         return;
                                     }
                                     if (!error) {
                                         handleDatagram(bytes);
                                     }
                                     receive();
                                 });
}

/// A datagram has an effect only if it starts with a client's qport and Admission accepts its sender. Frames
/// behind a frame with another qport have none.
void PracticeServer::handleDatagram(std::size_t bytes)
{
    Logger::getInstance()->countPacket(Logger::UDP_RECEIVED, bytes);
    Client* const client =
        bytes < framing::qportSize ? nullptr : findSender(framing::uint16At(datagram.data()));
    if (client == nullptr) {
        return;
    }
    const std::uint64_t now = match.stepCount();
    client->limits.receivedDatagram(now);
    framing::ClientFrame frame;
    for (std::size_t used = 0; used < bytes; used += frame.size()) {
        if (framing::cutClientFrame(&datagram[used], bytes - used, frame) != framing::Cut::frame) {
            client->limits.receivedGarbage(now);
            return;
        }
        if (frame.qport != client->qport) {
            return;
        }
        Logger::getInstance()->countMessage(Logger::UDP_RECEIVED);
        const FrameMeaning meaning = handleFrame(*client, frame);
        if (meaning == FrameMeaning::steering) {
            if (!client->isPlaying()) {
                introduce(*client->session);
            }
            client->limits.receivedSteering(now);
        } else if (meaning == FrameMeaning::garbage) {
            client->limits.receivedGarbage(now);
        }
    }
}

FrameMeaning PracticeServer::handleFrame(Client& client, const framing::ClientFrame& frame)
{
    ShipInput input;
    const FrameMeaning meaning = readSteering(frame, input);
    if (meaning == FrameMeaning::steering) {
        match.setInput(client.ship, input);
        client.steeredAt = match.stepCount();
    }
    return meaning;
}

/// The client that Admission accepts as the datagram's sender, or null.
PracticeServer::Client* PracticeServer::findSender(std::uint16_t qport)
{
    const Admission::Verdict verdict = admission.judge(qport, sender, match.stepCount());
    if (verdict == Admission::Verdict::guess) {
        guessLog.log("ignore a guess at a qport from " + sender.address().to_string(), match.stepCount());
        ++counted["qport guesses"];
    }
    if (verdict == Admission::Verdict::guess || verdict == Admission::Verdict::ignored) {
        return nullptr;
    }
    const auto hasQport = [qport](const Client& client) { return client.qport == qport; };
    const auto client = std::find_if(clients.begin(), clients.end(), hasQport);
    if (verdict == Admission::Verdict::moved) {
        ++counted["port moves"];
        clientLog.log(
            "move " + match.findShip(client->ship)->name + " to port " + std::to_string(sender.port()),
            match.stepCount());
    }
    return &*client;
}

// The clock of the match.

void PracticeServer::scheduleSteps()
{
    stepTimer.expires_at(clock.nextStep());
    stepTimer.async_wait([this](const error_code&) {
        if (!isRunning()) {
            return;
        }
        for (int i = 0; i < mostStepsAtOnce && clock.takeStep(std::chrono::steady_clock::now()); ++i) {
            step();
        }
        scheduleSteps();
    });
}

void PracticeServer::step()
{
    match.step();
    broadcast.afterStep();
    logResult();
    removeLeavers();
    releaseSilentControls();
    if (match.stepCount() % stepsPerSnapshot == 0) {
        sendSnapshot();
    }
    for (const Client& client : clients) {
        client.session->flush();
    }
    acceptConnections();
    for (RateLimitedLog* limited : {&clientLog, &turnedAwayLog, &guessLog}) {
        limited->afterStep(match.stepCount());
    }
}

void PracticeServer::logResult()
{
    if (const auto result = match.takeResult()) {
        for (const std::string& line : scoreTable(*result)) {
            config.log(line);
        }
    }
}

void PracticeServer::releaseSilentControls()
{
    for (const Client& client : clients) {
        if (match.stepCount() - client.steeredAt == silentSteps) {
            match.releaseControls(client.ship);
        }
    }
}

/// A datagram that the system does not take at once is lost; the next snapshot replaces it.
void PracticeServer::sendSnapshot()
{
    for (const std::string& packed : broadcast.takeSnapshot()) {
        for (const Client& client : clients) {
            if (!client.isPlaying()) {
                continue;
            }
            error_code error;
            const std::size_t sent =
                ports.udp.send_to(boost::asio::buffer(packed), admission.endpointOf(client.qport), 0, error);
            if (!error) {
                Logger::getInstance()->countPacket(Logger::UDP_SENT, sent);
            }
        }
    }
}

}  // namespace practice
