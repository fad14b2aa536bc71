#include "peer/ProtocolChecker.h"

#include "network/Framing.h"
#include "network/Messages.h"

#include <cmath>

namespace peer {

namespace {

// Promises to every client. They repeat the server's constants on purpose: those could change unseen.
constexpr std::size_t largestDatagram = 1200;  ///< bytes
constexpr std::uint32_t snapshotSpacing = 50;  ///< milliseconds of match time
constexpr std::uint64_t firstId = std::uint64_t(1)
                                  << 32U;  ///< clients give smaller ids to objects of their own

template <class State>
bool hasPose(const State& state)
{
    const Vector3 p = messages::toVector3(state.position());
    const Quaternion q = messages::toQuaternion(state.orientation());
    return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z) &&
           std::abs(q.dotProduct(q) - 1.0F) < 0.001F;
}

}  // namespace

void ProtocolChecker::expect(bool holds, const char* fault)
{
    if (!holds) {
        ++found[fault];
    }
}

void ProtocolChecker::receiveDatagram(const Datagram& datagram)
{
    traffic.datagramBytes += datagram.bytes.size();
    expect(datagram.bytes.size() <= largestDatagram, "a datagram of more than 1,200 bytes");
    timestamp.reset();
    expect(receiveFrames(datagram.bytes) == datagram.bytes.size(), "half a frame at the end of a datagram");
    if (timestamp) {
        expect(*timestamp % snapshotSpacing == 0, "a snapshot between two multiples of 50 ms");
        ++traffic.snapshots.try_emplace(*timestamp, Snapshot{datagram.arrival}).first->second.datagrams;
    }
}

void ProtocolChecker::receiveStream(std::string& stream)
{
    timestamp.reset();
    const std::size_t used = receiveFrames(stream);
    expect(!timestamp, "an update on TCP");
    traffic.streamBytes += used;
    stream.erase(0, used);
}

std::size_t ProtocolChecker::receiveFrames(const std::string& bytes)
{
    std::size_t used = 0;
    while (const std::size_t length = framing::wholeFrameLength(bytes.data() + used, bytes.size() - used)) {
        receiveFrame(bytes.data() + used + framing::lengthSize, length);
        used += framing::lengthSize + length;
    }
    return used;
}

void ProtocolChecker::receiveFrame(const char* frame, std::size_t size)
{
    const auto parse = [&](auto message) {
        const bool isValid = framing::parseBody(message, frame + 1, size - 1);
        expect(isValid, "a body that is no message of its type");
        if (isValid) {
            receive(message);
        }
    };
    switch (static_cast<unsigned char>(frame[0])) {
        case MessageTypes::OBJECT_INFO:
            return parse(Vantor::ObjectInfo());
        case MessageTypes::OBJECT_UPDATE:
            return parse(Vantor::ObjectUpdate());
        case MessageTypes::OBJECT_DESTROY:
            return parse(Vantor::ObjectDestroy());
        case MessageTypes::WELCOME:
            return parse(Vantor::Welcome());
        default:
            return expect(false, "a type byte that no server sends");
    }
}

void ProtocolChecker::receive(const Vantor::ObjectUpdate& update)
{
    expect(update.has_position() && update.has_orientation() && hasPose(update), "an update without a pose");
    expect(!timestamp || timestamp == update.timestamp(), "two times in one datagram");
    timestamp = update.timestamp();
    if (announced.count(update.id()) == 0) {
        unannounced.try_emplace(update.id(),
                                Clock::now());  // its ObjectInfo may arrive later: TCP and UDP keep no order
    }
    positions[update.id()] = messages::toVector3(update.position());
    received.updates.push_back(update);
}

void ProtocolChecker::receive(const Vantor::ObjectInfo& info)
{
    const bool isShip = info.objecttype() == 0;
    expect(welcome.id() != 0, "an object before the welcome");
    expect(info.id() >= firstId, "an id among those of the clients");
    expect(hasPose(info), "an object without a pose");
    expect(isShip ? info.has_playerdata() : info.has_projectiledata(), "an object without its data");
    if (isShip) {
        announced.insert(info.id());
        unannounced.erase(info.id());
    }
    positions[info.id()] = messages::toVector3(info.position());
    received.infos.push_back(info);
}

void ProtocolChecker::receive(const Vantor::ObjectDestroy& destroy)
{
    positions.erase(destroy.id());  // unknown ids are debris from before the Welcome
    received.destroyed.push_back(destroy.id());
}

void ProtocolChecker::receive(const Vantor::Welcome& message)
{
    expect(welcome.id() == 0, "a second welcome");
    welcome = message;
}

std::map<std::string, std::uint64_t> ProtocolChecker::faults(Clock::duration patience) const
{
    auto result = found;
    for (const auto& [id, since] : unannounced) {
        if (since + patience <= Clock::now()) {
            ++result["a ship that moves but was never announced"];
        }
    }
    return result;
}

}  // namespace peer
