#include "peer/ScriptedServer.h"

#include "network/Framing.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/write.hpp>

#include <array>

namespace peer {

std::string rawFrame(unsigned char type, const std::string& body)
{
    std::string frame;
    framing::appendFrame(frame, type, body);
    return frame;
}

std::optional<SteeringDatagram> parseSteering(const std::string& datagram)
{
    framing::ClientFrame frame;
    if (framing::cutClientFrame(datagram.data(), datagram.size(), frame) != framing::Cut::frame) {
        return std::nullopt;
    }
    const std::optional<messages::Steering> steering = messages::readSteering(frame);
    if (!steering || messages::steeringFrame(frame.qport, *steering) != datagram) {
        return std::nullopt;
    }
    return SteeringDatagram{*steering, frame.qport};
}

using Lock = std::lock_guard<std::mutex>;
using boost::asio::buffer;

ScriptedServer::~ScriptedServer()
{
    stopped = true;
    thread.join();
}

void ScriptedServer::work()
{
    constexpr std::uint64_t unknownObject = 999999999;
    for (; !stopped; std::this_thread::sleep_for(1ms)) {
        const Lock lock(mutex);
        receive();
        if (hasHeartbeat && client.port() != 0 && Clock::now() >= nextBeat) {
            nextBeat = Clock::now() + 100ms;
            boost::system::error_code gone;
            ports.udp.send_to(buffer(messages::updateFrame(unknownObject, 1, {})), client, 0, gone);
        }
    }
}

// Takes what is there, without waiting.
void ScriptedServer::receive()
{
    boost::system::error_code error;
    std::array<char, 4096> bytes{};
    if (!tcp.is_open()) {
        ports.acceptor.non_blocking(true);
        ports.acceptor.accept(tcp, error);
        received.connected = received.connected || !error;
    } else if (tcp.available(error) > 0) {
        received.tcpBytes += tcp.read_some(buffer(bytes), error);
    }
    for (boost::asio::ip::udp::endpoint sender;;) {
        const std::size_t size = ports.udp.receive_from(buffer(bytes), sender, 0, error);
        if (error) {
            return;
        }
        client = sender;
        received.datagrams.push_back({Clock::now(), std::string(bytes.data(), size)});
    }
}

ScriptedServer::Record ScriptedServer::record() const
{
    const Lock lock(mutex);
    return received;
}

bool ScriptedServer::sendTcp(const std::string& bytes)
{
    const Lock lock(mutex);
    boost::system::error_code gone;
    boost::asio::write(tcp, buffer(bytes), gone);
    return !gone;
}

void ScriptedServer::sendUdp(const std::string& bytes)
{
    const Lock lock(mutex);
    boost::system::error_code gone;
    ports.udp.send_to(buffer(bytes), client, 0, gone);
}

void ScriptedServer::closeTcp()
{
    const Lock lock(mutex);
    tcp.close();
}

}  // namespace peer
