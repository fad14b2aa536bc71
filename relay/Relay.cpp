#include "relay/Relay.h"

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

/// Whether a connection to there comes in at such a door of ours, which is 127.0.0.1's.
bool leadsTo(const Listener& door, const tcp::endpoint& server)
{
    namespace ip = boost::asio::ip;
    const ip::address& to = server.address();
    const bool isMapped = to.is_v6() && to.to_v6().is_v4_mapped();
    const ip::address plain = isMapped ? ip::make_address_v4(ip::v4_mapped, to.to_v6()) : to;
    const bool isHere = plain == ip::address_v4::loopback() || plain == ip::address_v4::any();
    return isHere && server.port() == door.port();
}

}  // namespace

Relay::Relay(boost::asio::io_context& io, const RelayConfig& config_)
    : config(config_), server(resolve(io, config_)), door(io, config_.port, config_.log)
{
    if (leadsTo(door, server)) {
        throw std::runtime_error("the server cannot be the relay itself, which has port " +
                                 std::to_string(door.port()));
    }
}

void Relay::start()
{
    door.open([this](tcp::socket socket) { handleConnection(std::move(socket)); },
              [this](const UdpFlow::Endpoint& client, const char* data, std::size_t size) {
                  if (const auto flow = flowOf(client)) {
                      flow->fromClient(data, size);
                  }
              });
}

void Relay::stop()
{
    door.close();
    for (const auto& [number, link] : links) {
        link->close();
    }
    for (const auto& [client, flow] : flows) {
        flow->close();
    }
    links.clear();
    flows.clear();
}

void Relay::handleConnection(tcp::socket socket)
{
    if (links.size() < mostLinks) {
        linksRefused.clear();
        addLink(std::move(socket));
    } else {
        linksRefused.log("turning away connections: " + std::to_string(mostLinks) + " are open");
    }
}

void Relay::addLink(tcp::socket socket)
{
    const std::uint32_t number = ++linkCount;
    const std::string name = "connection " + std::to_string(number);
    config.log(name + ": opened");
    const auto link = std::make_shared<TcpLink>(std::move(socket), number, config);
    links[number] = link;
    link->start(server, [this, number, name](const std::string& reason) {
        config.log(name + ": " + reason);
        links.erase(number);
    });
}

/// None where there are too many.
std::shared_ptr<UdpFlow> Relay::flowOf(const UdpFlow::Endpoint& client)
{
    if (const auto known = flows.find(client); known != flows.end()) {
        return known->second;
    }
    if (flows.size() >= mostFlows) {
        dropIdleFlows();
    }
    if (flows.size() < mostFlows) {
        return addFlow(client);
    }
    flowsRefused.log("ignoring new senders of datagrams: " + std::to_string(mostFlows) + " are active");
    return nullptr;
}

std::shared_ptr<UdpFlow> Relay::addFlow(const UdpFlow::Endpoint& client)
{
    const UdpFlow::Endpoint serverAddress(server.address(), server.port());
    try {
        auto flow = std::make_shared<UdpFlow>(door.udp(), client, serverAddress, flowCount + 1, config);
        ++flowCount;
        flow->start();
        flows[client] = flow;
        flowsRefused.clear();
        return flow;
    } catch (const boost::system::system_error& error) {
        flowsRefused.log("ignoring new senders of datagrams: " + error.code().message());
        return nullptr;
    }
}

void Relay::dropIdleFlows()
{
    const Time oldest = Clock::now() - idleLimit;
    for (auto flow = flows.begin(); flow != flows.end();) {
        if (flow->second->lastHeard() < oldest) {
            flow->second->close();
            flow = flows.erase(flow);
        } else {
            ++flow;
        }
    }
}

}  // namespace relay
