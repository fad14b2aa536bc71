#include "network/PacketReceiver.h"

#include "Common/DebugPrint.h"
#include "Common/PrintableText.h"
#include "Common/Protobuf/Object/Object.pb.h"
#include "math/Quaternion.h"
#include "math/SaturatingTruncation.h"
#include "math/Vector3.h"
#include "network/Messages.h"
#include "network/PacketSender.h"
#include "network/ProtobufConversion.h"
#include "network/Timer.h"
#include "scene/General.h"
#include "scene/Player.h"
#include "scene/Projectile.h"
#include "scene/SceneGraph.h"
#include "scene/SceneObjectFactory.h"

#include <unistd.h>

#include <boost/asio/error.hpp>
#include <boost/date_time/posix_time/posix_time_types.hpp>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

// The scene's keys are signed: ids above 2^63 wrap, and stay unique.
Transform* find(SceneGraph& graph, std::uint64_t id)
{
    return graph.getOBjectById(static_cast<long long>(id));
}

Transform* makeProjectile(const Vantor::ObjectInfo& msg)
{
    auto* projectile = new Projectile(msg.id());
    if (msg.has_projectiledata()) {
        projectile->velocity[0] = messages::toVector3(msg.projectiledata().velocity());
        projectile->blueTeam = msg.projectiledata().blueteam();
    }
    return projectile;
}

// Null without a team or a name.
Transform* makePlayer(const Vantor::ObjectInfo& msg)
{
    const Vantor::PlayerData& data = msg.playerdata();
    if (!msg.has_playerdata() || !data.has_blueteam() || !data.has_name()) {
        return nullptr;
    }
    return new Player(msg.id(), data.blueteam(), saturatingTruncation(static_cast<double>(data.health())));
}

// Null if the message lacks something or its type is none that servers create: the message is dropped.
Transform* makeObject(const Vantor::ObjectInfo& msg)
{
    switch (msg.objecttype()) {
        case SGT_PLAYER:
            return makePlayer(msg);
        case SGT_PROJECTILE:
            return makeProjectile(msg);
        default:
            return nullptr;
    }
}

void synchroniseClockOnce(unsigned int serverTime)
{
    if (!Timer::isSynced) {
        Timer::sync_clock(serverTime);
        Timer::isSynced = true;
    }
}

void storeTeamScores(const Vantor::PlayerData& data)
{
    if (data.has_redteamscore()) {
        General::getInstance()->redTeamScore = data.redteamscore();
    }
    if (data.has_blueteamscore()) {
        General::getInstance()->blueTeamScore = data.blueteamscore();
    }
}

void leaveExplosion(Vector3 position)
{
    SceneObjectFactory* factory = SceneObjectFactory::getInstance();
    Transform* explosion = factory->create(SGT_BILLBOARD);
    explosion->position = position;
    factory->ship(explosion);
}

// The watchdog's last resort. While standard output is stopped, a diagnostic blocks its thread. That is the
// network thread itself, or the main thread with a queue's mutex held. Then the watchdog cannot run, but a
// signal can. It leaves a late watchdog five seconds to end the process with its message.
void setLastResort(unsigned int seconds)
{
    std::signal(SIGALRM, [](int) { endProcessIn(5); });
    alarm(std::max(1U, seconds));
}

// The main thread may be drawing, exiting, or holding standard output. So no destructor and no exit handler
// runs. If the message gets stuck, the last resort ends the process. It is set anew here: the alarm that
// was set with the watchdog may be about to end the process.
[[noreturn]] void endProcessFromNetworkThread(unsigned int seconds, const std::string& reason)
{
    setLastResort(2);
    DebugPrint("No UDP packet received in %u - exiting with error %s\n", seconds, reason.c_str());
    std::_Exit(EXIT_FAILURE);
}

}  // namespace

void endProcessIn(unsigned int seconds)
{
    std::signal(SIGALRM, [](int) {
        // Standard error may be stuck, too. Then a second alarm ends the process.
        std::signal(SIGALRM, [](int) { _exit(EXIT_FAILURE); });
        sigset_t alarms;
        sigemptyset(&alarms);
        sigaddset(&alarms, SIGALRM);
        pthread_sigmask(SIG_UNBLOCK, &alarms, nullptr);
        alarm(1);
        constexpr std::string_view text = "The client did not end in time\n";
        [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text.data(), text.size());
        _exit(EXIT_FAILURE);
    });
    alarm(seconds);
}

PacketReceiver::PacketReceiver(boost::asio::io_service* service, PacketSender* packetSender,
                               SceneGraph* graph, unsigned int udpTimeout)
    : AbstractPacketReceiver(service),
      sender(packetSender),
      sceneGraph(graph),
      watchdog(*service),
      udpTimeoutSeconds(udpTimeout)
{
    udpSocket.open(udp::v4());
    udpSocket.bind(udp::endpoint(udp::v4(), 0));
    asyncReceive(&udpSocket);
    watchdog.expires_from_now(boost::posix_time::seconds(udpTimeoutSeconds));
    awaitTimeout();
}

void PacketReceiver::Socket(tcp::socket* socket)
{
    setLastResort(udpTimeoutSeconds);
    asyncReceive(socket);
}

void PacketReceiver::dispatchPackets()
{
    getTCPPackets();
    getUDPPackets();
}

void PacketReceiver::awaitTimeout()
{
    watchdog.async_wait([this](const boost::system::error_code& error) { udpTimeout(error); });
}

void PacketReceiver::udpTimeout(const boost::system::error_code& error)
{
    if (error == boost::asio::error::operation_aborted) {
        return;
    }
    endProcessFromNetworkThread(udpTimeoutSeconds, error.message());
}

void PacketReceiver::resetTimer()
{
    if (watchdog.expires_from_now(boost::posix_time::seconds(udpTimeoutSeconds)) > 0) {
        setLastResort(udpTimeoutSeconds);
        awaitTimeout();
    } else {
        DebugPrint("Timer already expired\n");
    }
}

void PacketReceiver::handleUDPReceive(const boost::system::error_code& error, char* data, std::size_t bytes,
                                      udp::socket* socket)
{
    resetTimer();
    AbstractPacketReceiver::handleUDPReceive(error, data, bytes, socket);
}

bool PacketReceiver::dispatchClosedConnection(tcp::socket*)
{
    DebugPrint("Connection closed - exiting\n");
    std::exit(EXIT_SUCCESS);
}

bool PacketReceiver::dispatchWelcome(Vantor::Welcome* msg)
{
    PacketSender::getInstance()->setQPort(static_cast<unsigned short>(msg->qport()));
    playerId = msg->id();
    return true;
}

bool PacketReceiver::dispatchObjectInfo(Vantor::ObjectInfo* msg)
{
    Transform* object = find(*sceneGraph, msg->id());
    if (object == nullptr) {
        object = makeObject(*msg);
        if (object == nullptr) {
            return true;
        }
        sceneGraph->attach(object);
    }
    synchroniseClockOnce(msg->timestamp());

    Vector3 position = messages::toVector3(msg->position());
    Quaternion orientation = messages::toQuaternion(msg->orientation());
    object->updateInfo(msg->timestamp(), position, orientation, true);
    if (msg->objecttype() != SGT_PLAYER) {
        return true;
    }
    // The server chooses type and id independently: the id may be a carrier's or a shot's. Only a Player has
    // room for player data.
    if (auto* player = dynamic_cast<Player*>(object); player != nullptr) {
        ProtobufConversion::playerData(player, &msg->playerdata());
    }
    storeTeamScores(msg->playerdata());
    return true;
}

bool PacketReceiver::dispatchObjectUpdate(Vantor::ObjectUpdate* msg)
{
    Transform* object = find(*sceneGraph, msg->id());
    if (object == nullptr) {
        return true;
    }
    // An absent position or orientation reads as all zeros; servers send both.
    Vector3 position = messages::toVector3(msg->position());
    Quaternion orientation = messages::toQuaternion(msg->orientation());
    object->updateInfo(msg->timestamp(), position, orientation, false);
    return true;
}

bool PacketReceiver::dispatchObjectDestroy(Vantor::ObjectDestroy* msg)
{
    Transform* object = find(*sceneGraph, msg->id());
    if (object == nullptr) {
        return true;
    }
    sceneGraph->addToRemoveList(object);
    if (object->type == SGT_PROJECTILE) {
        leaveExplosion(object->position);
    } else if (const auto* player = dynamic_cast<Player*>(object)) {
        const char* const name = player->name.c_str();  // ends at an embedded NUL
        DebugPrintReceived("Player %s logged out\n", printable(name).c_str());
    }
    return true;
}
