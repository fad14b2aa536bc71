#include "peer/ProtocolChecker.h"

#include "network/Framing.h"
#include "network/MessageTypes.h"
#include "server/match/Match.h"

#include <algorithm>
#include <cmath>

namespace peer {

namespace {

/// Bytes, as promised to every client; deliberately not the server's own constant, which could change unseen.
constexpr std::size_t largestDatagram = 1200;
constexpr std::uint32_t snapshotSpacing = 50;  ///< milliseconds of match time

bool isFinite(const Vantor::Position& p)
{
    return std::isfinite(p.x()) && std::isfinite(p.y()) && std::isfinite(p.z());
}

bool isUnit(const Vantor::Orientation& q)
{
    return std::abs(q.x() * q.x() + q.y() * q.y() + q.z() * q.z() + q.w() * q.w() - 1.0F) < 0.001F;
}

}  // namespace

void ProtocolChecker::expect(bool holds, const char* fault)
{
    if (!holds) {
        ++found[fault];
    }
}

void ProtocolChecker::hearDatagram(const char* data, std::size_t size)
{
    udpBytes += size;
    expect(size <= largestDatagram, "a datagram of more than 1,200 bytes");
    std::set<std::uint32_t> timestamps;
    expect(hearFrames(data, size, timestamps) == size, "half a frame at the end of a datagram");
    expect(timestamps.size() <= 1, "two times in one datagram");
    for (const std::uint32_t timestamp : timestamps) {
        expect(timestamp % snapshotSpacing == 0, "a snapshot between two multiples of 50 ms");
        Snapshot& snapshot = times[timestamp];
        snapshot.at = snapshot.datagrams == 0 ? Clock::now() : snapshot.at;
        ++snapshot.datagrams;
    }
}

void ProtocolChecker::hearStream(const char* data, std::size_t size)
{
    tcpBytes += size;
    pending.append(data, size);
    std::set<std::uint32_t> timestamps;
    pending.erase(0, hearFrames(pending.data(), pending.size(), timestamps));
    expect(timestamps.empty(), "an update on TCP");
}

std::size_t ProtocolChecker::hearFrames(const char* data, std::size_t size,
                                        std::set<std::uint32_t>& timestamps)
{
    std::size_t used = 0;
    while (const std::size_t length = framing::wholeFrameLength(data + used, size - used)) {
        const char* frame = data + used + framing::lengthSize;
        hearFrame(static_cast<unsigned char>(frame[0]), frame + 1, static_cast<int>(length) - 1, timestamps);
        used += framing::lengthSize + length;
    }
    return used;
}

void ProtocolChecker::hearFrame(unsigned char type, const char* body, int size,
                                std::set<std::uint32_t>& timestamps)
{
    Vantor::ObjectUpdate update;
    Vantor::ObjectInfo info;
    Vantor::ObjectDestroy destroy;
    bool parsed = false;
    switch (type) {
        case MessageTypes::OBJECT_UPDATE:
            parsed = update.ParseFromArray(body, size);
            hearUpdate(update, timestamps);
            break;
        case MessageTypes::OBJECT_INFO:
            parsed = info.ParseFromArray(body, size);
            hearInfo(info);
            break;
        case MessageTypes::OBJECT_DESTROY:
            parsed = destroy.ParseFromArray(body, size);  // perhaps of debris from before our time
            break;
        case MessageTypes::WELCOME:
            parsed = greeting.id() == 0 && greeting.ParseFromArray(body, size);
            break;
        default:
            break;
    }
    expect(parsed, "a frame that is no message, or a second welcome");
}

void ProtocolChecker::hearUpdate(const Vantor::ObjectUpdate& update, std::set<std::uint32_t>& timestamps)
{
    timestamps.insert(update.timestamp());
    updated.insert(update.id());
    expect(isFinite(update.position()) && isUnit(update.orientation()), "an update without a pose");
}

void ProtocolChecker::hearInfo(const Vantor::ObjectInfo& info)
{
    announced.insert(info.id());
    expect(info.id() >= practice::Match::firstId, "an id among those of the clients");
    expect(isFinite(info.position()) && isUnit(info.orientation()), "an object without a pose");
    expect(info.objecttype() == 0 ? info.has_playerdata() : info.has_projectiledata(),
           "an object without its data");
}

void ProtocolChecker::beginMeasuring()
{
    times.clear();
    udpBytes = 0;
    tcpBytes = 0;
}

std::map<std::string, std::uint64_t> ProtocolChecker::faults() const
{
    auto result = found;
    const auto strangers = std::count_if(updated.begin(), updated.end(),
                                         [this](std::uint64_t id) { return announced.count(id) == 0; });
    if (strangers > 0) {
        result["a ship that moves but was never announced"] = static_cast<std::uint64_t>(strangers);
    }
    if (greeting.id() == 0) {
        result["no welcome"] = 1;
    }
    return result;
}

}  // namespace peer
