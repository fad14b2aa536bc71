#pragma once

#include "PracticeServer/ClientSession.h"
#include "PracticeServer/Match.h"
#include "PracticeServer/MatchBroadcast.h"
#include "PracticeServer/SceneMirror.h"
#include "PracticeServer/ServerPorts.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace practice {

struct ServerConfig
{
    std::uint16_t port = 21042;  ///< 0: any free port
    unsigned bots = 8;
    std::uint32_t seed = 1;  ///< of the match; qports are random in any case
    std::size_t mostClients = 32;
    std::function<void(const std::string& line)> log = [](const std::string&) {};
};

/// A server on 127.0.0.1 that hosts one match.
///
/// Single-threaded: lives on the thread that runs the io_context, which must not run any more once the server
/// is destroyed. Nothing a client sends is trusted, and no client can stall or grow the server: what is
/// received is bounded, and a client that does not read is cut off.
class PracticeServer
{
public:
    /// Opens the ports; throws boost::system::system_error if that fails.
    PracticeServer(boost::asio::io_context& io, const ServerConfig& config);
    PracticeServer(const PracticeServer&) = delete;
    PracticeServer& operator=(const PracticeServer&) = delete;
    ~PracticeServer() { stop(); }

    std::uint16_t port() const { return portNumber; }

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
        std::uint64_t heardAt;                                  ///< step of the last valid update
        std::optional<boost::asio::ip::udp::endpoint> address;  ///< unknown until its first datagram
    };

    ServerConfig config;
    bool stopped = false;
    ServerPorts ports;
    std::uint16_t portNumber;
    boost::asio::steady_timer stepTimer;
    boost::asio::steady_timer acceptPause;
    std::chrono::steady_clock::time_point nextStep;
    Match match;
    MatchBroadcast broadcast;
    SceneMirror mirror;
    std::vector<Client> clients;
    std::random_device qportSource;
    std::array<char, 2048> datagram{};
    boost::asio::ip::udp::endpoint sender;

    void accept();
    void handleAccept(const boost::system::error_code& error, boost::asio::ip::tcp::socket socket);
    void welcome(boost::asio::ip::tcp::socket socket);
    void remove(ObjectId ship, const std::string& fault);
    std::uint16_t freshQport();

    void receive();
    void handleDatagram(std::size_t bytes);
    bool handleFrame(Client& client, const ClientFrame& frame);
    Client* findClient(ObjectId ship);
    Client* findSender(const ClientFrame& frame);

    void scheduleSteps();
    void runDueSteps();
    void step();
    void releaseSilentPilots();
    void sendSnapshot();
    void sendToAll(const std::string& frame);
};

}  // namespace practice
