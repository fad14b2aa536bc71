#pragma once

#include "Common/Protobuf/Object/Object.pb.h"
#include "math/Vector3.h"
#include "peer/Endpoints.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace peer {

/// Decodes, checks and records what a server sends to one client. Not thread-safe.
///
/// Nothing received is trusted: what breaks the protocol is counted as a fault and skipped.
class ProtocolChecker
{
public:
    /// The owner empties it if messages must not pile up.
    struct Received
    {
        std::vector<Vantor::ObjectInfo> infos;
        std::vector<Vantor::ObjectUpdate> updates;
        std::vector<std::uint64_t> destroyed;
    };
    /// The datagrams of one timestamp.
    struct Snapshot
    {
        Clock::time_point arrival;  ///< of the first datagram
        unsigned datagrams = 0;
    };
    struct Traffic
    {
        std::map<std::uint32_t, Snapshot> snapshots;  ///< by timestamp
        std::uint64_t datagramBytes = 0;
        std::uint64_t streamBytes = 0;
    };

    Received received;
    Traffic traffic;
    Vantor::Welcome welcome;                     ///< id 0 until it has come
    std::map<std::uint64_t, Vector3> positions;  ///< newest of each object that is not destroyed

    void receiveDatagram(const Datagram& datagram);
    /// Takes the whole frames away from the front of a stream.
    void receiveStream(std::string& stream);

    /// Each kind of fault so far, with its count; empty where the server kept to the protocol. `patience`:
    /// how long a ship may move before its announcement arrives, as TCP and UDP keep no order.
    std::map<std::string, std::uint64_t> faults(Clock::duration patience = {}) const;

private:
    std::set<std::uint64_t> announced;                       ///< ships that an ObjectInfo announced
    std::map<std::uint64_t, Clock::time_point> unannounced;  ///< ships with an update only, since when
    std::optional<std::uint32_t> timestamp;                  ///< of the updates in the bytes being received
    std::map<std::string, std::uint64_t> found;

    std::size_t receiveFrames(const std::string& bytes);
    void receiveFrame(const char* frame, std::size_t size);
    void receive(const Vantor::ObjectUpdate& update);
    void receive(const Vantor::ObjectInfo& info);
    void receive(const Vantor::ObjectDestroy& destroy);
    void receive(const Vantor::Welcome& message);
    void expect(bool holds, const char* fault);
};

}  // namespace peer
