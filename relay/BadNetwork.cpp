#include "relay/BadNetwork.h"

#include <algorithm>
#include <utility>

namespace relay {

namespace {

constexpr unsigned deepestReorder = 3;  ///< datagrams; parallel paths of one route do that

}  // namespace

Impairment::Impairment(const Conditions& conditions_, std::uint32_t seed, const Flow& flow)
    : conditions(conditions_)
{
    if (flow.transport == Transport::stream) {
        conditions = {conditions_.latency, conditions_.jitter};
    }
    std::seed_seq sequence{seed, static_cast<std::uint32_t>(flow.transport), flow.number,
                           static_cast<std::uint32_t>(flow.direction)};
    engine.seed(sequence);
}

// Every decision takes the same number of draws. So a changed rate does not move the other faults to other
// datagrams. Only a datagram behind one that is not held can be held. Of all datagrams, the chance h makes h
// / (1 + h) late.
Impairment::Decision Impairment::next()
{
    const bool lost = unit() < conditions.loss / 100;
    const bool doubled = unit() < conditions.duplicate / 100;
    const bool drawn = unit() < conditions.reorder / (100 - conditions.reorder);
    const auto depth = 1 + static_cast<unsigned>(unit() * deepestReorder);
    const double swing = 2 * unit() - 1;
    const std::chrono::duration<double, std::milli> delay(
        std::max(0.0, conditions.latency + swing * conditions.jitter));
    const unsigned copies = doubled ? 2 : 1;
    const bool held = drawn && !lastWasHeld;
    lastWasHeld = lost ? lastWasHeld : held;
    return {lost ? 0 : copies, std::chrono::duration_cast<Duration>(delay), held ? depth : 0};
}

/// Uniform in [0, 1). The language standard fixes the engine's sequence, but not the library's distributions.
double Impairment::unit()
{
    return static_cast<double>(engine()) * (1.0 / 4294967296.0);
}

bool DelayQueue::push(Time now, std::string datagram)
{
    const Impairment::Decision decision = impairment.next();
    Waiting coming = {now + decision.delay, decision.copies, decision.overtakenBy, std::move(datagram)};
    if (waitingBytes + coming.cost() > byteLimit) {
        return false;
    }
    if (decision.copies > 0) {
        waitingBytes += coming.cost();
        waiting.push_back(std::move(coming));
    }
    return true;
}

std::optional<std::string> DelayQueue::pop(Time now)
{
    if (nextDue() > now) {
        return std::nullopt;
    }
    const auto leaving = waiting.begin() + static_cast<std::ptrdiff_t>(next());
    if (--leaving->copies > 0) {
        return leaving->bytes;
    }
    waitingBytes -= leaving->cost();
    for (auto overtaken = waiting.begin(); overtaken != leaving; ++overtaken) {
        if (--overtaken->overtakenBy == 0) {
            overtaken->due = leaving->due;
        }
    }
    std::string bytes = std::move(leaving->bytes);
    waiting.erase(leaving);
    return bytes;
}

Time DelayQueue::nextDue() const
{
    if (waiting.empty()) {
        return Time::max();
    }
    const Waiting& leaving = waiting[next()];
    return leaving.due + (leaving.overtakenBy == 0 ? Duration(0) : holdLimit);
}

/// The index of the datagram that leaves next: the first that is not held. If holdLimit ends earlier, it is
/// the first of all. Only held datagrams stand in front of it.
std::size_t DelayQueue::next() const
{
    const auto isFree = [](const Waiting& datagram) { return datagram.overtakenBy == 0; };
    const auto first = std::find_if(waiting.begin(), waiting.end(), isFree);
    const bool isTooLate = first == waiting.end() || waiting.front().due + holdLimit < first->due;
    return isTooLate ? 0 : static_cast<std::size_t>(first - waiting.begin());
}

}  // namespace relay
