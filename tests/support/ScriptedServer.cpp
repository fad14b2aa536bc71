#include "tests/support/ScriptedServer.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/write.hpp>

#include <memory>
#include <stdexcept>

namespace support {

namespace {

using boost::asio::ip::tcp;
using boost::asio::ip::udp;
using Error = boost::system::error_code;

constexpr auto heartbeatPeriod = 100ms;
constexpr std::uint64_t unknownObject = 999999999;

const boost::asio::ip::address_v4 loopback = boost::asio::ip::address_v4::loopback();

// The port that the system gave to TCP may be taken on UDP: then try another.
void bindBoth(tcp::acceptor& acceptor, udp::socket& udpSocket)
{
    for (int attempt = 0; attempt < 20; ++attempt) {
        acceptor = tcp::acceptor(acceptor.get_executor(), tcp::endpoint(loopback, 0));
        Error taken;
        udpSocket = udp::socket(udpSocket.get_executor(), udp::v4());
        udpSocket.bind(udp::endpoint(loopback, acceptor.local_endpoint().port()), taken);
        if (!taken) {
            return;
        }
    }
    throw std::runtime_error("no port that is free on TCP and UDP");
}

}  // namespace

ScriptedServer::ScriptedServer() : acceptor(io), udpSocket(io), tcpSocket(io), heartbeat(io)
{
    bindBoth(acceptor, udpSocket);
    accept();
    receiveUdp();
    thread = std::thread([this] { io.run(); });
}

ScriptedServer::~ScriptedServer()
{
    io.stop();
    thread.join();
}

std::string ScriptedServer::port() const
{
    return std::to_string(acceptor.local_endpoint().port());
}

void ScriptedServer::accept()
{
    acceptor.async_accept(tcpSocket, [this](Error error) {
        if (error) {
            return;
        }
        {
            const std::lock_guard<std::mutex> lock(mutex);
            connected = true;
        }
        receiveTcp();
    });
}

void ScriptedServer::receiveTcp()
{
    tcpSocket.async_read_some(boost::asio::buffer(tcpBuffer), [this](Error error, std::size_t size) {
        if (error) {
            return;
        }
        {
            const std::lock_guard<std::mutex> lock(mutex);
            tcpBytes += size;
        }
        receiveTcp();
    });
}

void ScriptedServer::receiveUdp()
{
    udpSocket.async_receive_from(boost::asio::buffer(udpBuffer), sender,
                                 [this](Error error, std::size_t size) {
                                     if (!error) {
                                         record(size);
                                     }
                                     if (error != boost::asio::error::operation_aborted) {
                                         receiveUdp();
                                     }
                                 });
}

void ScriptedServer::record(std::size_t size)
{
    const bool isFirst = client.port() == 0;
    client = sender;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        received.push_back({Clock::now(), std::string(udpBuffer.data(), size)});
    }
    if (isFirst) {
        beat();
    }
}

void ScriptedServer::beat()
{
    if (!beating) {
        return;
    }
    Error ignored;  // the client may be gone
    udpSocket.send_to(boost::asio::buffer(update(unknownObject, 1, {})), client, 0, ignored);
    heartbeat.expires_after(heartbeatPeriod);
    heartbeat.async_wait([this](Error error) {
        if (!error) {
            beat();
        }
    });
}

bool ScriptedServer::awaitConnection(Clock::duration timeout)
{
    return eventually([this] { return wasConnected(); }, timeout);
}

bool ScriptedServer::awaitDatagram(Clock::duration timeout)
{
    return eventually([this] { return !datagrams().empty(); }, timeout);
}

bool ScriptedServer::awaitUpdate(const std::function<bool(const Steering&)>& wanted, Clock::duration timeout)
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

void ScriptedServer::sendTcp(std::string bytes)
{
    boost::asio::post(io, [this, bytes = std::move(bytes)] {
        Error ignored;  // the client may be gone
        boost::asio::write(tcpSocket, boost::asio::buffer(bytes), ignored);
    });
}

void ScriptedServer::sendUdp(std::string bytes)
{
    boost::asio::post(io, [this, bytes = std::move(bytes)] {
        Error ignored;  // as above
        udpSocket.send_to(boost::asio::buffer(bytes), client, 0, ignored);
    });
}

void ScriptedServer::floodTcp(std::string bytes)
{
    boost::asio::post(io, [this, bytes = std::move(bytes)] {
        flood = bytes;
        writeFlood();
    });
}

void ScriptedServer::writeFlood()
{
    boost::asio::async_write(tcpSocket, boost::asio::buffer(flood), [this](Error error, std::size_t) {
        if (!error) {
            writeFlood();
        }
    });
}

void ScriptedServer::stopHeartbeat()
{
    boost::asio::post(io, [this] {
        beating = false;
        heartbeat.cancel();
    });
}

void ScriptedServer::closeTcp()
{
    boost::asio::post(io, [this] { tcpSocket.close(); });
}

std::vector<ScriptedServer::Datagram> ScriptedServer::datagrams() const
{
    const std::lock_guard<std::mutex> lock(mutex);
    return received;
}

Steering ScriptedServer::lastSteering() const
{
    const std::vector<Datagram> all = datagrams();
    const std::optional<Steering> steering = all.empty() ? std::nullopt : parseSteering(all.back().bytes);
    if (!steering) {
        throw std::runtime_error("the client's newest datagram is no ClientUpdate");
    }
    return *steering;
}

bool ScriptedServer::wasConnected() const
{
    const std::lock_guard<std::mutex> lock(mutex);
    return connected;
}

std::size_t ScriptedServer::tcpBytesReceived() const
{
    const std::lock_guard<std::mutex> lock(mutex);
    return tcpBytes;
}

}  // namespace support
