#pragma once

#include <boost/asio/io_service.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ip/udp.hpp>

#include <cstdint>
#include <memory>
#include <string>

class PacketReceiver;
class PacketSender;

/// The client's one connection to a game server. It owns the I/O service, the thread that runs it, the
/// receiver and the TCP socket.
///
/// A singleton, created on first use and never destroyed. Its operations belong to the main thread, except
/// runIOService, which is the network thread. connect() blocks while it resolves and connects, and is called
/// once.
class NetworkHelper
{
public:
    static NetworkHelper* instance;
    static NetworkHelper* getInstance();

    /// Connects to the first address that `host` and `port` resolve to. `host` is a name or an address,
    /// `port` a decimal number or a service name. `udpTimeout` in seconds: the watchdog over datagrams starts
    /// before the attempt. Prints two lines and returns false if there is no server, no socket or no thread.
    bool connect(std::string host, std::string port, unsigned int udpTimeout);
    /// Stops the I/O service. Sockets stay open, because the process is about to end.
    void disconnect();
    /// The body of the network thread: returns when the service is stopped. Ends the process, with a message
    /// and status 1, when an exception escapes, for example because memory ran out.
    static void runIOService();

    /// Applies all messages received since the last call.
    void dispatchRecievedPackages();
    /// The own player's object id; 0 until the server's Welcome has been applied.
    std::uint64_t getThisPlayerID();

    NetworkHelper() = default;
    NetworkHelper(const NetworkHelper&) = delete;
    NetworkHelper& operator=(const NetworkHelper&) = delete;

    boost::asio::io_service ioService;
    std::unique_ptr<boost::asio::ip::tcp::socket> tcpSocket;
    boost::asio::ip::udp::socket* udpSocket = nullptr;  ///< the receiver's
    PacketSender* sender = nullptr;                     ///< handed to the receiver, which does not use it
    PacketReceiver* receiver = nullptr;  ///< owned, never destroyed: the network thread uses it to the end

private:
    void connectSocket(const std::string& host, const std::string& port);
};
