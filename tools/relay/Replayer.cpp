#include "tools/relay/Replayer.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace relay {

using boost::asio::ip::tcp;

Replayer::Replayer(boost::asio::io_context& io, std::uint16_t port, Script script_, double speed_, Log log_)
    : script(std::move(script_)), speed(speed_), log(std::move(log_)), door(io, port)
{
}

void Replayer::start()
{
    door.open([this](tcp::socket socket) { handleConnection(std::move(socket)); },
              [this](const FrontDoor::Endpoint& sender, const char* data, std::size_t size) {
                  handleDatagram(sender, std::string(data, size));
              });
}

void Replayer::stop()
{
    door.close();
    for (const auto& [number, session] : sessions) {
        session->close();
    }
    sessions.clear();
}

void Replayer::handleConnection(tcp::socket socket)
{
    if (sessions.size() >= mostSessions) {
        log("turned away a client: " + std::to_string(mostSessions) + " are watching");
        return;
    }
    const std::uint32_t number = ++sessionCount;
    const std::string name = "client " + std::to_string(number);
    log(name + ": connected");
    const auto session = std::make_shared<ReplaySession>(std::move(socket), door.udp(), script, speed);
    sessions[number] = session;
    session->start([this, number, name](const std::string& reason) {
        log(name + ": " + reason);
        forget(number);
    });
}

/// Clients that connect at once have the same qport; any of them takes an address that nobody has yet.
void Replayer::handleDatagram(const FrontDoor::Endpoint& sender, const std::string& datagram)
{
    if (addresses.count(sender) != 0) {
        return;
    }
    const auto owner = std::find_if(sessions.begin(), sessions.end(), [&](const auto& session) {
        return session.second->takesAddress(sender, datagram);
    });
    if (owner != sessions.end()) {
        addresses[sender] = owner->first;
    }
}

void Replayer::forget(std::uint32_t number)
{
    sessions.erase(number);
    for (auto address = addresses.begin(); address != addresses.end();) {
        address = address->second == number ? addresses.erase(address) : std::next(address);
    }
}

}  // namespace relay
