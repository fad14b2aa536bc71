#pragma once

#include "Common/Protobuf/Object/Object.pb.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace peer {

using Clock = std::chrono::steady_clock;

/// Hears what a server sends to one client, checks all of it, and remembers when the snapshots came.
///
/// A snapshot is all datagrams of one timestamp.
class ProtocolChecker
{
public:
    struct Snapshot
    {
        Clock::time_point at;  ///< of its first datagram
        unsigned datagrams = 0;
    };

    void hearDatagram(const char* data, std::size_t size);
    void hearStream(const char* data, std::size_t size);

    /// Forgets the traffic so far, but not the objects and the faults.
    void beginMeasuring();

    const Vantor::Welcome& welcome() const { return greeting; }
    const std::map<std::uint32_t, Snapshot>& snapshots() const { return times; }
    std::uint64_t datagramBytes() const { return udpBytes; }
    std::uint64_t streamBytes() const { return tcpBytes; }

    /// What was wrong with what came, each kind once with its count; to be asked at the end.
    std::map<std::string, std::uint64_t> faults() const;

private:
    Vantor::Welcome greeting;
    std::string pending;                      ///< of the stream
    std::set<std::uint64_t> announced;        ///< objects that an info told of
    std::set<std::uint64_t> updated;          ///< objects that an update told of
    std::map<std::uint32_t, Snapshot> times;  ///< by timestamp
    std::map<std::string, std::uint64_t> found;
    std::uint64_t udpBytes = 0;
    std::uint64_t tcpBytes = 0;

    std::size_t hearFrames(const char* data, std::size_t size, std::set<std::uint32_t>& timestamps);
    void hearFrame(unsigned char type, const char* body, int size, std::set<std::uint32_t>& timestamps);
    void hearUpdate(const Vantor::ObjectUpdate& update, std::set<std::uint32_t>& timestamps);
    void hearInfo(const Vantor::ObjectInfo& info);
    void expect(bool holds, const char* fault);
};

}  // namespace peer
