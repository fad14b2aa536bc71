#include "relay/Relay.h"

#include "relay/TcpLink.h"
#include "relay/UdpFlow.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>

namespace relay {

namespace {

using boost::asio::ip::tcp;

/// The first address only, as the client does.
tcp::endpoint resolve(boost::asio::io_context& io, const RelayConfig& config)
{
    tcp::resolver resolver(io);
    try {
        return resolver.resolve(config.serverHost, config.serverPort)->endpoint();
    } catch (const boost::system::system_error& error) {
        throw boost::system::system_error(error.code(),
                                          "cannot find " + config.serverHost + ":" + config.serverPort);
    }
}

/// Whether a connection to `server` reaches `port` of 127.0.0.1.
bool leadsTo(std::uint16_t port, const tcp::endpoint& server)
{
    namespace ip = boost::asio::ip;
    const ip::address& to = server.address();
    const bool isMapped = to.is_v6() && to.to_v6().is_v4_mapped();
    const ip::address plain = isMapped ? ip::make_address_v4(ip::v4_mapped, to.to_v6()) : to;
    const bool isHere = plain == ip::address_v4::loopback() || plain == ip::address_v4::any();
    return isHere && server.port() == port;
}

}  // namespace

Relay::Relay(boost::asio::io_context& io, const RelayConfig& config_)
    : Listener(io, config_.port, config_.log),
      config(config_),
      server(resolve(io, config_)),
      linksRefused(config_.log),
      flowsRefused(config_.log)
{
    if (leadsTo(port(), server)) {
        throw std::runtime_error("the server cannot be the relay itself, which has port " +
                                 std::to_string(port()));
    }
    if (!config.recordPath.empty()) {  // only now: an error above must not replace an older recording
        config.recording = std::make_shared<RecordingWriter>(config.recordPath, config.log);
    }
}

void Relay::stop()
{
    Listener::stop();
    for (const auto& link : links) {
        link->close();
    }
    for (const auto& [client, flow] : flows) {
        flow->close();
    }
    links.clear();
    flows.clear();
}

void Relay::handleConnection(TcpSocket socket)
{
    const auto hasEnded = [](const auto& link) { return !link->isOpen(); };
    links.erase(std::remove_if(links.begin(), links.end(), hasEnded), links.end());
    if (links.size() >= mostLinks) {
        linksRefused.log("turning away connections: " + std::to_string(mostLinks) + " are open");
        return;
    }
    linksRefused.clear();
    links.push_back(std::make_shared<TcpLink>(std::move(socket), ++linkCount, config));
    links.back()->start(server);
}

void Relay::handleDatagram(const Endpoint& client, const char* data, std::size_t size)
{
    if (const auto flow = flowOf(client)) {
        flow->handleClientDatagram(data, size);
    }
}

/// None where there are too many, or no socket is left.
std::shared_ptr<UdpFlow> Relay::flowOf(const Endpoint& client)
{
    if (const auto known = flows.find(client); known != flows.end()) {
        return known->second;
    }
    if (flows.size() >= mostFlows) {
        dropIdleFlows();
    }
    if (flows.size() >= mostFlows) {
        flowsRefused.log("ignoring new senders of datagrams: " + std::to_string(mostFlows) + " are active");
        return nullptr;
    }
    try {
        const Endpoint serverAddress(server.address(), server.port());
        const auto flow = std::make_shared<UdpFlow>(udp(), client, serverAddress, flowCount + 1, config);
        ++flowCount;
        flow->receive();
        flowsRefused.clear();
        return flows[client] = flow;
    } catch (const boost::system::system_error& error) {
        flowsRefused.log("ignoring new senders of datagrams: " + error.code().message());
        return nullptr;
    }
}

void Relay::dropIdleFlows()
{
    for (auto flow = flows.begin(); flow != flows.end();) {
        if (flow->second->isIdleFor(idleLimit)) {
            flow->second->close();
            flow = flows.erase(flow);
        } else {
            ++flow;
        }
    }
}

}  // namespace relay
