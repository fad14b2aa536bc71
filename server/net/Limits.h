#pragma once

#include "service/LogOnce.h"

#include <cstdint>
#include <string>
#include <utility>

namespace practice {

// Limits on what clients may cost the server. Time is counted in steps of the match.

/// Allows a number of units a second on average, and `burst` units at once.
class RateLimit
{
public:
    /// The whole burst is allowed at `step`.
    RateLimit(std::uint32_t perSecond, std::uint32_t burst, std::uint64_t step);

    /// Returns false if `units` exceed what is allowed now; nothing is spent then.
    bool spend(std::uint64_t units, std::uint64_t step);

private:
    std::uint64_t perSecond;
    // Units times steps per second, so that the share of one step is a whole number.
    std::uint64_t capacity;
    std::uint64_t left;
    std::uint64_t filledAt;  ///< step
};

/// Decides why a client has to be dropped. Knows nothing of sockets or clocks.
///
/// The owner reports only datagrams that it accepts as the client's. While a client loads, they do not count.
/// From its first steering over UDP on it plays. A well-formed message without effect is no offence.
class ClientLimits
{
public:
    /// What a client may do before it is dropped. `vantor` sends 20 datagrams of about 35 bytes a second and
    /// nothing on TCP. An honest client stays far below, even if a bad line doubles or bunches its datagrams.
    struct Config
    {
        unsigned firstSteering = 20;        ///< seconds until it steers over UDP; it loads its models first
        unsigned silence = 30;              ///< seconds between datagrams; a client gives up after 10 itself
        std::uint32_t datagrams = 200;      ///< a second
        std::uint32_t datagramBurst = 400;  ///< datagrams
        std::uint32_t streamBytes = 8192;   ///< a second, on TCP
        std::uint32_t streamBurst = 65536;  ///< bytes
        std::uint32_t garbageBurst = 20;    ///< malformed messages; one more is forgiven each second
    };

    enum class State : std::uint8_t
    {
        loading,
        playing
    };

    ClientLimits(const Config& config, std::uint64_t step);

    State state() const { return current; }

    void receivedDatagram(std::uint64_t step);
    /// A datagram held steering: from now on the client plays.
    void receivedSteering(std::uint64_t step);
    /// A datagram held bytes that are no frame, or a body that does not parse.
    void receivedGarbage(std::uint64_t step);
    void receivedStream(std::uint64_t bytes, std::uint64_t step);

    /// The end of a sentence about the client; empty while it stays.
    std::string reasonToDrop(std::uint64_t step) const;

private:
    Config config;
    State current = State::loading;
    std::uint64_t lastDatagram;  ///< step of it, or of the client's arrival
    RateLimit datagramRate;
    RateLimit streamRate;
    RateLimit garbageRate;
    std::string violation;  ///< of the first limit that was exceeded

    void check(bool allowed, const std::string& limit);
};

/// A log that nobody can flood. It passes on some lines, and once a second the number of lines left out.
class RateLimitedLog
{
public:
    RateLimitedLog(LogOnce::Log sink_, const RateLimit& rate_) : sink(std::move(sink_)), rate(rate_) {}

    void log(const std::string& line, std::uint64_t step);
    /// Logs the number of lines left out, at most once a second.
    void afterStep(std::uint64_t step);
    /// Logs that number now, unless it is 0.
    void flush();

private:
    LogOnce::Log sink;
    RateLimit rate;
    std::uint64_t leftOut = 0;
    std::uint64_t flushedAt = 0;  ///< step
};

}  // namespace practice
