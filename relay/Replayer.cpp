#include "relay/Replayer.h"

#include <utility>

namespace relay {

using boost::asio::ip::tcp;

Replayer::Replayer(boost::asio::io_context& io, std::uint16_t port, ServerTrack script_, double speed_,
                   Log log_)
    : script(std::move(script_)), speed(speed_), log(std::move(log_)), door(io, port, log), refused(log)
{
}

void Replayer::start()
{
    door.open([this](tcp::socket socket) { handleConnection(std::move(socket)); },
              [this](const Listener::Endpoint& sender, const char* data, std::size_t size) {
                  if (session != nullptr) {
                      session->takeAddress(sender, std::string(data, size));
                  }
              });
}

void Replayer::stop()
{
    door.close();
    if (session != nullptr) {
        session->close();
        session.reset();
    }
}

void Replayer::handleConnection(tcp::socket socket)
{
    if (session != nullptr && !session->hasEnded()) {
        refused.log("turning away clients: another one is watching");
        return;
    }
    refused.clear();
    const std::string name = "client " + std::to_string(++sessionCount);
    log(name + ": connected");
    session = std::make_shared<ReplaySession>(std::move(socket), door.udp(), script, speed);
    session->start([this, name](const std::string& reason) { log(name + ": " + reason); });
}

}  // namespace relay
