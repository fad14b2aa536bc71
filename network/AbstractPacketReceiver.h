#pragma once

#include "network/NetworkEvent.h"

#include <boost/asio/io_service.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ip/udp.hpp>
#include <boost/shared_ptr.hpp>
#include <boost/thread/lock_guard.hpp>
#include <boost/thread/mutex.hpp>
#include <boost/unordered_map.hpp>

#include <array>
#include <cstddef>
#include <list>
#include <string>

namespace Vantor {
class ClientUpdate;
class ObjectDestroy;
class ObjectInfo;
class ObjectUpdate;
class Welcome;
}  // namespace Vantor

/// Cuts the bytes of TCP sockets and one UDP socket into messages and queues them for another thread.
///
/// The handle... operations run on the thread that runs the I/O service. The dispatch... operations run on
/// the thread that calls getTCPPackets() and getUDPPackets(), with that queue's mutex held: keep them short.
/// If a dispatch... operation returns false, the rest of its queue is dropped. It may use the message during
/// the call only.
///
/// Nothing received is trusted: a bad frame is reported and skipped. A TCP frame of length 0 stalls its
/// stream. The bytes from there on are kept, up to `leftoverLimit`, and never read. A TCP error ends that
/// connection's reception and queues a closed-connection event. A UDP error ends UDP reception for good.
class AbstractPacketReceiver
{
public:
    using EventPtr = boost::shared_ptr<NetworkEvent>;
    using EventQueue = std::list<EventPtr>;
    using tcp = boost::asio::ip::tcp;
    using udp = boost::asio::ip::udp;

    /// The subclass opens the UDP socket. `service` must outlive this.
    explicit AbstractPacketReceiver(boost::asio::io_service* service);
    AbstractPacketReceiver(const AbstractPacketReceiver&) = delete;
    AbstractPacketReceiver& operator=(const AbstractPacketReceiver&) = delete;

    virtual void handleTCPReceive(const boost::system::error_code& error, char* data, std::size_t bytes,
                                  tcp::socket* socket);
    virtual void handleTCPError(const boost::system::error_code& error, tcp::socket* socket);
    virtual void handleUDPReceive(const boost::system::error_code& error, char* data, std::size_t bytes,
                                  udp::socket* socket);
    /// Calls the dispatch... operation for the event's kind and message type; false if there is none.
    virtual bool dispatchEvent(boost::shared_ptr<NetworkEvent> event);
    virtual bool dispatchLogout() { return true; }
    virtual bool dispatchNewConnection(tcp::socket*) { return true; }
    virtual bool dispatchClosedConnection(tcp::socket*) { return true; }
    virtual bool dispatchWelcome(Vantor::Welcome*) { return true; }
    virtual bool dispatchObjectInfo(Vantor::ObjectInfo*) { return true; }
    virtual bool dispatchObjectUpdate(Vantor::ObjectUpdate*) { return true; }
    virtual bool dispatchObjectDestroy(Vantor::ObjectDestroy*) { return true; }
    virtual bool dispatchClientUpdate(Vantor::ClientUpdate*, unsigned int /*senderTag*/, udp::endpoint)
    {
        return true;
    }
    virtual ~AbstractPacketReceiver();

    /// Start one asynchronous receive; its handler starts the next.
    void asyncReceive(tcp::socket* socket);
    void asyncReceive(udp::socket* socket);

    /// Queue an event; any thread.
    void addTCPNetworkEvent(EventPtr event);
    void addUDPNetworkEvent(EventPtr event);

    /// Dispatch and empty one queue.
    void getTCPPackets() { getPackets(tcpEvents, tcpMutex); }
    void getUDPPackets() { getPackets(udpEvents, udpMutex); }
    template <class List, class Mutex>
    void getPackets(List& list, Mutex& mutex);

    udp::socket* getUDPSocket() { return &udpSocket; }

    static constexpr std::size_t bufferSize = 2048;  ///< bytes; a longer datagram is cut
    /// Bytes. No whole frame is as long, so only a stalled stream gets there: it then grows no more.
    static constexpr std::size_t leftoverLimit = 1024UL * 1024UL;

    boost::asio::io_service* ioService;  ///< not owned
    udp::socket udpSocket;
    udp::endpoint udpSender;  ///< where the latest datagram came from
    std::array<char, bufferSize> udpBuffer = {};
    /// Shared by all TCP sockets, so two pending receives could overwrite each other. The client has one.
    std::array<char, bufferSize> tcpBuffer = {};
    /// Owned; the unparsed tail of each stream, if not empty. Network thread only.
    boost::unordered_map<tcp::socket*, std::string*> leftovers;
    EventQueue udpEvents;
    EventQueue tcpEvents;
    boost::mutex udpMutex;
    boost::mutex tcpMutex;

private:
    std::string takeLeftover(tcp::socket* socket);
    void keepLeftover(tcp::socket* socket, std::string leftover);
    bool dispatchMessage(NetworkEvent& event);
};

template <class List, class Mutex>
void AbstractPacketReceiver::getPackets(List& list, Mutex& mutex)
{
    const boost::lock_guard<Mutex> lock(mutex);
    for (const auto& event : list) {
        if (!dispatchEvent(event)) {
            break;
        }
    }
    list.clear();
}
