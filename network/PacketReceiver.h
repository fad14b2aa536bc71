#pragma once

#include "network/AbstractPacketReceiver.h"

#include <boost/asio/deadline_timer.hpp>

#include <cstdint>

class PacketSender;
class SceneGraph;

/// Ends the process with status 1 after this time, whatever its threads are waiting for: with a line on
/// standard error, or a second later without. Safe in a signal handler.
void endProcessIn(unsigned int seconds);

/// The client's receiver. It applies the server's messages to the scene graph, and ends the client when the
/// server has stopped.
///
/// The dispatch... operations run on the main thread and may touch the scene freely; the watchdog runs on the
/// network thread. No value, name or id that a server sends can do more than draw nonsense.
///
/// Ends the process: with status 0 when the TCP connection closes, 1 when no datagram arrives for the UDP
/// timeout. An alarm (SIGALRM) ends it a few seconds later if the watchdog is blocked, because standard
/// output is stopped. Lives to the end of the process.
class PacketReceiver : public AbstractPacketReceiver
{
public:
    /// Opens the UDP socket at any free port, starts its reception and arms the watchdog. `udpTimeout` in
    /// seconds. Throws boost::system::system_error if the system refuses a socket.
    PacketReceiver(boost::asio::io_service* service, PacketSender* packetSender, SceneGraph* graph,
                   unsigned int udpTimeout);

    /// Starts reception on the connected socket.
    void Socket(tcp::socket* socket);
    /// Applies all queued messages: TCP first, then UDP. Main thread only.
    void dispatchPackets();

    /// The watchdog's completion: ends the process unless the wait was only cancelled.
    void udpTimeout(const boost::system::error_code& error);
    /// Gives the server another UDP timeout; only prints a line if the watchdog has already fired.
    void resetTimer();

    void handleUDPReceive(const boost::system::error_code& error, char* data, std::size_t bytes,
                          udp::socket* socket) override;
    bool dispatchClosedConnection(tcp::socket* socket) override;
    bool dispatchWelcome(Vantor::Welcome* msg) override;
    bool dispatchObjectInfo(Vantor::ObjectInfo* msg) override;
    bool dispatchObjectUpdate(Vantor::ObjectUpdate* msg) override;
    bool dispatchObjectDestroy(Vantor::ObjectDestroy* msg) override;

    std::uint64_t playerId = 0;  ///< the own player's object, 0 until the Welcome; main thread only
    PacketSender* sender;        ///< not owned, not used
    SceneGraph* sceneGraph;      ///< not owned
    boost::asio::deadline_timer watchdog;
    unsigned int udpTimeoutSeconds;

private:
    void awaitTimeout();
};
