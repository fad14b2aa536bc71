#include "server/net/ClientLimits.h"

#include "server/match/Match.h"

namespace practice {

namespace {

constexpr std::uint64_t stepsPerSecond = Match::stepsPerSecond;

}  // namespace

ClientLimits::ClientLimits(const LimitConfig& limits_, std::uint64_t step)
    : limits(limits_),
      heardAt(step),
      datagramRate(limits.datagrams, limits.datagramBurst, step),
      streamRate(limits.streamBytes, limits.streamBurst, step),
      garbageRate(1, limits.garbageBurst, step)
{
}

void ClientLimits::datagram(std::uint64_t step)
{
    heardAt = step;
    note(datagramRate.spend(1, step), std::to_string(limits.datagrams) + " datagrams a second");
}

void ClientLimits::steeredByDatagram(std::uint64_t step)
{
    heardAt = step;
    hasSteered = true;
}

void ClientLimits::garbage(std::uint64_t step)
{
    note(garbageRate.spend(1, step), std::to_string(limits.garbageBurst) + " messages without sense");
}

void ClientLimits::streamBytes(std::uint64_t bytes, std::uint64_t step)
{
    note(streamRate.spend(bytes, step), std::to_string(limits.streamBytes) + " bytes a second on TCP");
}

void ClientLimits::note(bool allowed, const std::string& what)
{
    if (!allowed && excess.empty()) {
        excess = "sent more than " + what;
    }
}

std::string ClientLimits::fault(std::uint64_t step) const
{
    if (!excess.empty()) {
        return excess;
    }
    const unsigned patience = hasSteered ? limits.silence : limits.firstSteering;
    if (step - heardAt <= patience * stepsPerSecond) {
        return {};
    }
    return hasSteered ? "sent no datagram for " + std::to_string(patience) + " s"
                      : "sent no steering over UDP within " + std::to_string(patience) + " s";
}

}  // namespace practice
