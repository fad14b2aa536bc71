#include "server/net/Limits.h"

#include "server/match/Match.h"

#include <algorithm>

namespace practice {

namespace {

constexpr std::uint64_t stepsPerSecond = Match::stepsPerSecond;

}  // namespace

RateLimit::RateLimit(std::uint32_t perSecond_, std::uint32_t burst, std::uint64_t step)
    : perSecond(perSecond_), capacity(burst * stepsPerSecond), left(capacity), filledAt(step)
{
}

bool RateLimit::spend(std::uint64_t units, std::uint64_t step)
{
    left = std::min(capacity, left + (step - filledAt) * perSecond);
    filledAt = step;
    const std::uint64_t price = units * stepsPerSecond;
    if (price > left) {
        return false;
    }
    left -= price;
    return true;
}

ClientLimits::ClientLimits(const Config& config_, std::uint64_t step)
    : config(config_),
      lastDatagram(step),
      datagramRate(config.datagrams, config.datagramBurst, step),
      streamRate(config.streamBytes, config.streamBurst, step),
      garbageRate(1, config.garbageBurst, step)
{
}

void ClientLimits::receivedDatagram(std::uint64_t step)
{
    if (current == State::playing) {
        lastDatagram = step;
        check(datagramRate.spend(1, step), std::to_string(config.datagrams) + " datagrams a second");
    }
}

void ClientLimits::receivedSteering(std::uint64_t step)
{
    lastDatagram = step;
    current = State::playing;
}

void ClientLimits::receivedGarbage(std::uint64_t step)
{
    if (current == State::playing) {
        check(garbageRate.spend(1, step), std::to_string(config.garbageBurst) + " messages without sense");
    }
}

void ClientLimits::receivedStream(std::uint64_t bytes, std::uint64_t step)
{
    check(streamRate.spend(bytes, step), std::to_string(config.streamBytes) + " bytes a second on TCP");
}

void ClientLimits::check(bool allowed, const std::string& limit)
{
    if (!allowed && violation.empty()) {
        violation = "sent more than " + limit;
    }
}

std::string ClientLimits::reasonToDrop(std::uint64_t step) const
{
    if (!violation.empty()) {
        return violation;
    }
    const bool isPlaying = current == State::playing;
    const unsigned patience = isPlaying ? config.silence : config.firstSteering;
    if (step - lastDatagram <= patience * stepsPerSecond) {
        return {};
    }
    return isPlaying ? "sent no datagram for " + std::to_string(patience) + " s"
                     : "sent no steering over UDP within " + std::to_string(patience) + " s";
}

void RateLimitedLog::log(const std::string& line, std::uint64_t step)
{
    if (rate.spend(1, step)) {
        sink(line);
    } else {
        ++leftOut;
    }
}

void RateLimitedLog::afterStep(std::uint64_t step)
{
    if (leftOut != 0 && step >= flushedAt + stepsPerSecond) {
        flushedAt = step;
        flush();
    }
}

void RateLimitedLog::flush()
{
    if (const std::uint64_t count = std::exchange(leftOut, 0); count != 0) {
        sink("... and " + std::to_string(count) + " more lines like these");
    }
}

}  // namespace practice
