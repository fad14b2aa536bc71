#pragma once

#include "server/net/RateLimit.h"

#include <cstdint>
#include <string>

namespace practice {

/// What a client may do before it is dropped. A game sends 20 datagrams of about 35 bytes a second and
/// nothing on TCP, so an honest client stays far below, even where a bad line doubles its datagrams or holds
/// them up and lets them go at once.
struct LimitConfig
{
    unsigned firstSteering = 20;        ///< seconds until it steers over UDP; it is loading its models first
    unsigned silence = 30;              ///< seconds between datagrams; it gives us up itself after 10
    std::uint32_t datagrams = 200;      ///< a second
    std::uint32_t datagramBurst = 400;  ///< datagrams
    std::uint32_t streamBytes = 8192;   ///< a second, on TCP
    std::uint32_t streamBurst = 65536;  ///< bytes
    std::uint32_t garbageBurst = 20;    ///< messages without sense; one more is forgiven each second
};

/// Judges one client by what it sends; knows nothing of sockets or clocks, only the steps of the match.
///
/// What counts here comes from the client's own connection or from the address that is known to be its own:
/// a stranger who does not have the client's address gets nobody dropped. A well-formed message that means
/// nothing to us, by its type, its qport or an orientation that is none, is no fault: it changes nothing.
class ClientLimits
{
public:
    ClientLimits(const LimitConfig& limits, std::uint64_t step);

    void datagram(std::uint64_t step);  ///< any from its own address
    void steeredByDatagram(std::uint64_t step);
    void garbage(std::uint64_t step);  ///< bytes that are no frame, or a body that does not parse
    void streamBytes(std::uint64_t bytes, std::uint64_t step);

    /// Why the client has to go, as the end of a sentence about it; empty while it is in order.
    std::string fault(std::uint64_t step) const;

private:
    LimitConfig limits;
    std::uint64_t heardAt;  ///< step of the last datagram, or of its arrival
    bool hasSteered = false;
    RateLimit datagramRate;
    RateLimit streamRate;
    RateLimit garbageRate;
    std::string excess;  ///< the first limit that was broken

    void note(bool allowed, const std::string& what);
};

}  // namespace practice
