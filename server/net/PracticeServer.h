#pragma once

#include "server/match/Match.h"
#include "server/net/Admission.h"
#include "server/net/ClientInput.h"
#include "server/net/ClientSession.h"
#include "server/net/Limits.h"
#include "server/net/MatchBroadcast.h"
#include "server/net/StepClock.h"
#include "service/LogOnce.h"
#include "service/PortPair.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>

#include <array>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <random>
#include <string>

namespace practice {

struct ServerConfig
{
    boost::asio::ip::address_v4 bind{boost::asio::ip::address_v4::bytes_type{{127, 0, 0, 1}}};
    std::uint16_t port = 21042;  ///< 0: any free port
    unsigned bots = 16;
    MatchSettings match;
    std::size_t mostClients = 64;
    std::uint32_t placesPerAddress = 8;  ///< 0: any number
    ClientLimits::Config limits;
    LogOnce::Log log;  ///< must be set
    /// Where the qports come from: not from the match's seed, because nobody may guess them.
    std::function<std::uint32_t()> random = [source = std::make_shared<std::random_device>()] {
        return (*source)();
    };
};

/// A server that hosts one match.
///
/// Lives on the one thread that runs the io_context. The io_context must not run after the server is
/// destroyed. Nothing that a client sends is trusted. No client can stall the server or make it grow:
/// received data is bounded, and each step admits few connections. The server drops a client that misbehaves,
/// and one line says why. All time limits are counted in steps of the match.
class PracticeServer
{
public:
    /// Opens the ports; throws boost::system::system_error if that fails.
    PracticeServer(boost::asio::io_context& io, const ServerConfig& config);
    PracticeServer(const PracticeServer&) = delete;
    PracticeServer& operator=(const PracticeServer&) = delete;
    /// Closes the ports. The connections close with the io_context. Needs no memory, and logs nothing.
    ~PracticeServer() = default;

    std::uint16_t port() const { return ports.number(); }
    /// How many steps were played, and how late the latest was.
    std::string timing() const { return clock.report(); }
    const Match& currentMatch() const { return match; }
    /// How late the latest step since the last call was.
    StepClock::Duration takeLatestDelay() { return clock.takeLatestDelay(); }
    /// Totals since the start, by title: drops, changed ports, guessed qports, rejected connections.
    const std::map<std::string, std::uint64_t>& counts() const { return counted; }

    /// Starts the match's clock and admits clients.
    void start();
    /// Hangs up on everyone and leaves the io_context without work of ours.
    void stop();
    /// Plays one step now. The clock does so 60 times a second.
    void step();

private:
    struct Client
    {
        std::shared_ptr<ClientSession> session;
        ObjectId ship;
        std::uint16_t qport;
        std::uint64_t steeredAt;  ///< step of the last steering, or of the client's arrival
        ClientLimits limits;

        bool isPlaying() const { return limits.state() == ClientLimits::State::playing; }
    };

    ServerConfig config;
    PortPair ports;
    Admission admission;
    RateLimitedLog clientLog;
    RateLimitedLog turnedAwayLog;
    RateLimitedLog guessLog;
    std::map<std::string, std::uint64_t> counted{
        {"drops", 0}, {"port moves", 0}, {"qport guesses", 0}, {"turned away", 0}};
    LogOnce acceptErrors;
    boost::asio::steady_timer stepTimer;
    StepClock clock;
    Match match;
    MatchBroadcast broadcast;
    std::list<Client> clients;
    std::array<char, 2048> datagram{};
    boost::asio::ip::udp::endpoint sender;  ///< of the datagram

    bool isRunning() const { return ports.udp.is_open(); }

    void acceptConnections();
    void welcome(boost::asio::ip::tcp::socket socket);
    void introduce(ClientSession& session);
    void removeLeavers();
    std::string leaveLine(Client& client);
    std::uint16_t freshQport();

    void receive();
    void handleDatagram(std::size_t bytes);
    FrameMeaning handleFrame(Client& client, const framing::ClientFrame& frame);
    Client* findSender(std::uint16_t qport);

    void scheduleSteps();
    void logResult();
    void releaseSilentControls();
    void sendSnapshot();
};

}  // namespace practice
