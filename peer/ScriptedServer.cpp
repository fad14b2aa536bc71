#include "peer/ScriptedServer.h"

#include "network/Framing.h"

namespace peer {

using Lock = std::unique_lock<std::mutex>;

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

ScriptedServer::~ScriptedServer()
{
    stopped = true;
    thread.join();
}

void ScriptedServer::run()
{
    const std::string heartbeat = messages::updateFrame(999999999, 1, {});
    ports.acceptor.non_blocking(true);
    for (Clock::time_point next; !stopped; std::this_thread::sleep_for(1ms)) {
        const Lock lock(mutex);
        if (stream) {
            stream->poll();
        } else {
            boost::system::error_code error;
            boost::asio::ip::tcp::socket accepted = ports.acceptor.accept(error);
            if (!error) {
                stream.emplace(std::move(accepted));
            }
        }
        datagrams.poll();
        if (hasHeartbeat && !datagrams.received.empty() && Clock::now() >= next) {
            next = Clock::now() + 100ms;
            datagrams.send(heartbeat, datagrams.received.back().sender);
        }
    }
}

ScriptedServer::Record ScriptedServer::record() const
{
    const Lock lock(mutex);
    return {stream.has_value(), stream ? stream->received.size() : 0, datagrams.received};
}

SteeringDatagram ScriptedServer::lastSteering() const
{
    const Lock lock(mutex);
    return parseSteering(datagrams.received.at(datagrams.received.size() - 1).bytes).value();
}

bool ScriptedServer::sendTcp(const std::string& bytes)
{
    Lock lock(mutex);
    if (!stream) {
        return false;
    }
    for (stream->send(bytes); !stream->isSent(); lock.lock()) {
        lock.unlock();
        std::this_thread::sleep_for(1ms);  // the server's thread sends the rest
    }
    return !stream->end;
}

void ScriptedServer::sendUdp(const std::string& bytes)
{
    const Lock lock(mutex);
    datagrams.send(bytes, datagrams.received.at(datagrams.received.size() - 1).sender);
}

void ScriptedServer::closeTcp(bool resets)
{
    const Lock lock(mutex);
    if (resets) {
        stream->reset();
    } else {
        stream->close();
    }
}

}  // namespace peer
