#pragma once

#include "server/match/Match.h"
#include "server/net/ClientLimits.h"
#include "server/net/ClientSession.h"
#include "server/net/MatchBroadcast.h"
#include "server/net/PendingConnections.h"
#include "server/net/RateLimitedLog.h"
#include "server/net/StepClock.h"
#include "service/PortPair.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace practice {

struct ServerConfig
{
    boost::asio::ip::address_v4 bind{boost::asio::ip::address_v4::bytes_type{{127, 0, 0, 1}}};
    std::uint16_t port = 21042;  ///< 0: any free port
    unsigned bots = 16;
    MatchSettings match;  ///< its seed is not that of the qports: they are random in any case
    std::size_t mostClients = 64;
    LimitConfig conduct;
    std::size_t sendQueue = ClientSession::defaultQueueLimit;  ///< bytes that may wait for one client
    std::function<void(const std::string& line)> log = [](const std::string&) {};
};

/// A server that hosts one match.
///
/// Single-threaded: lives on the thread that runs the io_context, which must not run any more once the server
/// is destroyed. Nothing a client sends is trusted, and no client can stall or grow the server: what is
/// received is bounded, a client that misbehaves is dropped with one line that says why, and however fast
/// strangers connect, few are let in at a step and few lines tell of them. All timers are the match's steps.
class PracticeServer
{
public:
    /// Opens the ports; throws boost::system::system_error if that fails.
    PracticeServer(boost::asio::io_context& io, const ServerConfig& config);
    PracticeServer(const PracticeServer&) = delete;
    PracticeServer& operator=(const PracticeServer&) = delete;
    ~PracticeServer() { stop(); }

    std::uint16_t port() const { return portNumber; }
    /// How well the steps kept their time.
    std::string timing() const { return clock.report(); }
    const Match& currentMatch() const { return match; }

    /// Starts the match's clock and lets clients in.
    void start();
    /// Hangs up on everyone and leaves the io_context without work of ours.
    void stop();

private:
    struct Client
    {
        std::shared_ptr<ClientSession> session;
        ObjectId ship;
        std::string name;
        std::uint16_t qport;
        std::uint64_t heardAt;  ///< step of the last steering
        ClientLimits conduct;
        std::optional<boost::asio::ip::udp::endpoint> address;  ///< unknown until it steers over UDP
    };

    ServerConfig config;
    bool stopped = false;
    PortPair ports;
    std::uint16_t portNumber;
    RateLimitedLog clientLog;
    PendingConnections pending;
    boost::asio::steady_timer stepTimer;
    StepClock clock;
    Match match;
    MatchBroadcast broadcast;
    std::vector<Client> clients;
    std::random_device qportSource;
    std::array<char, 2048> datagram{};
    boost::asio::ip::udp::endpoint sender;
    std::uint64_t turnedAway = 0;        ///< connections that the log has not told of
    std::uint64_t turnedAwayToldAt = 0;  ///< step

    void say(const std::string& line) { clientLog.say(line, match.stepCount()); }
    void letIn();
    void welcome(boost::asio::ip::tcp::socket socket);
    void tellOfTurnedAway();
    void remove(ObjectId ship, const std::string& fault);
    void dropOffenders();
    std::uint16_t freshQport();

    void receive();
    void handleDatagram(std::size_t bytes);
    void handleDatagramFrame(Client& client, const framing::ClientFrame& frame);
    FrameMeaning handleFrame(Client& client, const framing::ClientFrame& frame);
    template <typename Condition>
    Client* findClient(Condition condition);
    Client* findClient(ObjectId ship);
    Client* findSender(std::uint16_t qport);

    void scheduleSteps();
    void runDueSteps();
    void step();
    void tellResult();
    void releaseSilentPilots();
    void sendSnapshot();
    void sendToAll(const std::string& frame);
    void flushAll();
};

}  // namespace practice
