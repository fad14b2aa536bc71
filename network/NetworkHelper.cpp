#include "network/NetworkHelper.h"

#include "Common/DebugPrint.h"
#include "network/PacketReceiver.h"
#include "network/PacketSender.h"
#include "scene/SceneGraph.h"

#include <boost/system/system_error.hpp>
#include <boost/thread/thread.hpp>

#include <cstdlib>
#include <exception>

NetworkHelper* NetworkHelper::instance = nullptr;

NetworkHelper* NetworkHelper::getInstance()
{
    if (instance == nullptr) {
        instance = new NetworkHelper;
    }
    return instance;
}

bool NetworkHelper::connect(std::string host, std::string port, unsigned int udpTimeout)
{
    SceneGraph* graph = SceneGraph::getInstance();
    try {
        receiver = new PacketReceiver(&ioService, sender, graph, udpTimeout);
        // Before any attempt to connect: datagrams and their watchdog run while the connection is being made.
        boost::thread(runIOService).detach();
        connectSocket(host, port);
        return true;
    } catch (const boost::system::system_error& error) {
        tcpSocket.reset();
        DebugPrint("Could not connect to %s:%s\n", host.c_str(), port.c_str());
        DebugPrint("Exception: %s\n", error.what());
        return false;
    }
}

void NetworkHelper::connectSocket(const std::string& host, const std::string& port)
{
    using boost::asio::ip::tcp;
    using boost::asio::ip::udp;

    tcpSocket = std::make_unique<tcp::socket>(ioService);
    tcp::resolver resolver(ioService);
    const tcp::endpoint server = resolver.resolve(tcp::resolver::query(host, port))->endpoint();
    auto serverUdp = std::make_unique<udp::endpoint>(server.address(), server.port());
    udpSocket = receiver->getUDPSocket();

    DebugPrint("Attempting to connect to %s:%s\n", host.c_str(), port.c_str());
    tcpSocket->connect(server);
    DebugPrint("Connected!\n");

    receiver->Socket(tcpSocket.get());
    PacketSender* packetSender = PacketSender::getInstance();
    packetSender->setSocket(tcpSocket.get());
    packetSender->setSocket(udpSocket);
    packetSender->setEndpoint(serverUdp.release());  // kept for the life of the process
}

void NetworkHelper::disconnect()
{
    ioService.stop();
}

// An exception here is a lack of memory or another failure of the system. The main thread may be anywhere, so
// no destructor and no exit handler runs. If the message gets stuck, the alarm ends the process.
void NetworkHelper::runIOService()
{
    try {
        getInstance()->ioService.run();
    } catch (const std::exception& error) {
        endProcessIn(2);
        DebugPrint("Network failed: %s - exiting\n", error.what());
        std::_Exit(EXIT_FAILURE);
    }
}

void NetworkHelper::dispatchRecievedPackages()
{
    if (receiver != nullptr) {
        receiver->dispatchPackets();
    }
}

std::uint64_t NetworkHelper::getThisPlayerID()
{
    return receiver != nullptr ? receiver->playerId : 0;
}
