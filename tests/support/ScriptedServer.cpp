#include "tests/support/ScriptedServer.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/write.hpp>

#include <array>

namespace support {

namespace {

using Lock = std::lock_guard<std::mutex>;

constexpr auto heartbeatPeriod = 100ms;
constexpr std::uint64_t unknownObject = 999999999;

}  // namespace

ScriptedServer::~ScriptedServer()
{
    {
        const Lock lock(mutex);
        stopped = true;
    }
    thread.join();
}

void ScriptedServer::work()
{
    for (bool goOn = true; goOn; std::this_thread::sleep_for(1ms)) {
        const Lock lock(mutex);
        goOn = !stopped;
        receive();
        if (beating && client.port() != 0 && Clock::now() >= nextBeat) {
            nextBeat = Clock::now() + heartbeatPeriod;
            boost::system::error_code gone;
            ports.udp.send_to(boost::asio::buffer(update(unknownObject, 1, {})), client, 0, gone);
        }
    }
}

// Takes what is there, without waiting.
void ScriptedServer::receive()
{
    boost::system::error_code error;
    std::array<char, 4096> buffer{};
    if (!tcp.is_open()) {
        ports.acceptor.non_blocking(true);
        ports.acceptor.accept(tcp, error);
    } else if (tcp.available(error) > 0) {
        tcpBytes += tcp.read_some(boost::asio::buffer(buffer), error);
    }
    for (boost::asio::ip::udp::endpoint sender;;) {
        const std::size_t size = ports.udp.receive_from(boost::asio::buffer(buffer), sender, 0, error);
        if (error) {
            return;
        }
        client = sender;
        received.push_back({Clock::now(), std::string(buffer.data(), size)});
    }
}

bool ScriptedServer::isConnected() const
{
    const Lock lock(mutex);
    return tcp.is_open();
}

bool ScriptedServer::awaitUpdate(const std::function<bool(const Steering&)>& wanted,
                                 Clock::duration timeout) const
{
    std::size_t next = datagrams().size();
    const auto hasArrived = [&] {
        const std::vector<Datagram> all = datagrams();
        while (next < all.size()) {
            const std::optional<Steering> steering = parseSteering(all[next++].bytes);
            if (steering && wanted(*steering)) {
                return true;
            }
        }
        return false;
    };
    return eventually(hasArrived, timeout);
}

bool ScriptedServer::sendTcp(const std::string& bytes)
{
    const Lock lock(mutex);
    boost::system::error_code gone;
    boost::asio::write(tcp, boost::asio::buffer(bytes), gone);
    return !gone;
}

void ScriptedServer::sendUdp(const std::string& bytes)
{
    const Lock lock(mutex);
    boost::system::error_code gone;
    ports.udp.send_to(boost::asio::buffer(bytes), client, 0, gone);
}

void ScriptedServer::stopHeartbeat()
{
    const Lock lock(mutex);
    beating = false;
}

void ScriptedServer::closeTcp()
{
    const Lock lock(mutex);
    tcp.close();
}

std::vector<ScriptedServer::Datagram> ScriptedServer::datagrams() const
{
    const Lock lock(mutex);
    return received;
}

Steering ScriptedServer::lastSteering() const
{
    const Lock lock(mutex);
    return parseSteering(received.at(received.size() - 1).bytes).value();
}

std::size_t ScriptedServer::tcpBytesReceived() const
{
    const Lock lock(mutex);
    return tcpBytes;
}

}  // namespace support
