#include "tests/relay/FinalScene.h"

#include "Common/Protobuf/Object/Object.pb.h"
#include "network/PacketReceiver.h"
#include "network/PacketSender.h"
#include "network/Timer.h"
#include "scene/General.h"
#include "scene/Player.h"
#include "scene/SceneGraph.h"
#include "scene/SceneObjectFactory.h"
#include "tests/support/Waiting.h"

#include <boost/asio/ip/tcp.hpp>

#include <map>
#include <sstream>
#include <stdexcept>

namespace {

using boost::asio::ip::tcp;
using boost::asio::ip::udp;
using namespace std::chrono_literals;

class Spectator : public PacketReceiver
{
public:
    explicit Spectator(boost::asio::io_service& service)
        : PacketReceiver(&service, nullptr, SceneGraph::getInstance(), 3600)  // an hour: no watchdog in here
    {
    }

    bool dispatchClosedConnection(tcp::socket*) override { return hasEnded = true; }

    bool hasEnded = false;
};

void startAnew()
{
    delete SceneGraph::instance;
    SceneGraph::instance = nullptr;
    delete General::instance;
    General::instance = nullptr;
    SceneObjectFactory::getInstance()->init(0);
    Timer::isSynced = false;
}

std::string describe(const Transform& object)
{
    std::ostringstream text;
    text.precision(9);  // enough for every bit of a float
    const Vector3& at = object.serverPosition[0];
    text << object.id << " type " << object.type << " at " << at.x << ' ' << at.y << ' ' << at.z;
    if (const auto* ship = dynamic_cast<const Player*>(&object)) {
        text << ' ' << (ship->blueTeam ? "blue " : "red ") << ship->name << " health " << ship->health
             << " score " << ship->score;
    }
    return text.str();
}

// Explosions are left out: they are the client's own, and last for a time of its clock.
std::string describeScene()
{
    std::map<unsigned long long, std::string> lines;
    for (const Transform* object : SceneGraph::getInstance()->children) {
        if (object->type == SGT_PLAYER || object->type == SGT_PROJECTILE) {
            lines[object->id] = describe(*object);
        }
    }
    const General& scores = *General::getInstance();
    std::string text =
        "red " + std::to_string(scores.redTeamScore) + " blue " + std::to_string(scores.blueTeamScore) + '\n';
    for (const auto& [id, line] : lines) {
        text += line + '\n';
    }
    return text;
}

// Looks ahead and touches nothing.
Vantor::ClientUpdate idleSteering()
{
    Vantor::ClientUpdate update;
    Vantor::Orientation& ahead = *update.mutable_orientation();
    ahead.set_w(1);
    ahead.set_x(0);
    ahead.set_y(0);
    ahead.set_z(0);
    update.set_boosterson(0);
    return update;
}

}  // namespace

std::string finalScene(std::uint16_t port)
{
    startAnew();
    boost::asio::io_service service;
    Spectator spectator(service);
    const auto server = boost::asio::ip::address_v4::loopback();
    tcp::socket connection(service);
    connection.connect({server, port});
    spectator.Socket(&connection);
    udp::endpoint address(server, port);
    PacketSender* const sender = PacketSender::getInstance();
    sender->setSocket(spectator.getUDPSocket());
    sender->setEndpoint(&address);

    Vantor::ClientUpdate steering = idleSteering();
    auto nextUpdate = support::Clock::now();
    const auto hasDrained = [&] {
        if (support::Clock::now() >= nextUpdate) {
            sender->send(steering);
            nextUpdate += 50ms;
        }
        const bool heardNothing = service.run_one_for(5ms) == 0;
        spectator.dispatchPackets();
        SceneGraph::getInstance()->applyRemoveList();
        return spectator.hasEnded && heardNothing;
    };
    const auto deadline = support::Clock::now() + 30s;
    while (!hasDrained()) {
        if (support::Clock::now() > deadline) {
            throw std::runtime_error("the server does not hang up");
        }
    }
    *sender = PacketSender();
    return describeScene();
}
