#include "relay/BadNetwork.h"

#include <algorithm>
#include <utility>

namespace relay {

namespace {

constexpr unsigned deepestReorder = 3;                ///< datagrams; parallel paths of one route do that
constexpr std::size_t segment = 1460;                 ///< bytes of a stream in one packet of an Ethernet
constexpr std::chrono::milliseconds lineBuffer{250};  ///< what a slow line holds back before it loses

/// Uniform in [0, 1). The language standard fixes the engine's sequence, but not the library's distributions.
double unit(std::mt19937& engine)
{
    return static_cast<double>(engine()) * (1.0 / 4294967296.0);
}

/// In bytes. Twice the mean, which is 1,000 bytes at 100 percent.
double longestDistance(double percentOfKilobytes)
{
    return percentOfKilobytes > 0 ? 2 * 1000 * 100 / percentOfKilobytes : 0;
}

/// The seed of the flow's faults of one kind.
std::uint32_t flowSeed(std::uint32_t seed, const Flow& flow, std::uint32_t kind)
{
    std::seed_seq sequence{seed, static_cast<std::uint32_t>(flow.transport), flow.number,
                           static_cast<std::uint32_t>(flow.direction), kind};
    std::uint32_t result = 0;
    sequence.generate(&result, &result + 1);
    return result;
}

}  // namespace

void RandomPlaces::advance(std::size_t bytes)
{
    if (bytes < ahead) {
        ahead -= bytes;
    } else {
        draw();
    }
}

void RandomPlaces::draw()
{
    const bool isSomewhere = longest > 0;
    ahead = isSomewhere ? 1 + static_cast<std::size_t>(unit(engine) * longest) : std::string::npos;
}

Impairment::Impairment(const Conditions& conditions_, std::uint32_t seed, const Flow& flow)
    : transport(flow.transport),
      conditions(conditions_),
      wrongBytes(longestDistance(conditions_.corrupt), flowSeed(seed, flow, 1)),
      cuts(conditions_.pieces, flowSeed(seed, flow, 2))
{
    if (transport == Transport::stream) {
        conditions.loss = conditions.duplicate = conditions.reorder = 0;
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
    const bool lost = unit(engine) < conditions.loss / 100;
    const bool doubled = unit(engine) < conditions.duplicate / 100;
    const bool drawn = unit(engine) < conditions.reorder / (100 - conditions.reorder);
    const auto depth = 1 + static_cast<unsigned>(unit(engine) * deepestReorder);
    const double swing = 2 * unit(engine) - 1;
    const std::chrono::duration<double, std::milli> delay(
        std::max(0.0, conditions.latency + swing * conditions.jitter));
    const unsigned copies = doubled ? 2 : 1;
    const bool held = drawn && !lastWasHeld;
    lastWasHeld = lost ? lastWasHeld : held;
    return {lost ? 0 : copies, std::chrono::duration_cast<Duration>(delay), held ? depth : 0};
}

void Impairment::corrupt(std::string& bytes)
{
    std::size_t place = 0;
    while (bytes.size() - place >= wrongBytes.distance()) {
        place += wrongBytes.distance();
        bytes[place - 1] = static_cast<char>(~bytes[place - 1]);
        wrongBytes.advance(wrongBytes.distance());
    }
    wrongBytes.advance(bytes.size() - place);
}

std::size_t Impairment::cut(std::size_t bytes)
{
    if (transport == Transport::datagrams) {
        return bytes;
    }
    const std::size_t piece = std::min({bytes, cuts.distance(), conditions.bandwidth > 0 ? segment : bytes});
    cuts.advance(piece);
    return piece;
}

Duration Impairment::sendingTime(std::size_t bytes) const
{
    const std::chrono::duration<double, std::milli> time(
        conditions.bandwidth > 0 ? static_cast<double>(bytes) / conditions.bandwidth : 0);
    return std::chrono::duration_cast<Duration>(time);
}

bool Impairment::losesAfter(Clock::duration wait) const
{
    return transport == Transport::datagrams && wait > lineBuffer;
}

bool DelayQueue::push(Time now, std::string bytes)
{
    impairment.corrupt(bytes);
    std::size_t used = 0;
    bool isTaken = true;
    do {  // the end of a stream is an empty piece
        const std::size_t size = impairment.cut(bytes.size() - used);
        isTaken = pushPiece(now, bytes.substr(used, size));
        used += size;
    } while (isTaken && used < bytes.size());
    return isTaken;
}

bool DelayQueue::pushPiece(Time now, std::string piece)
{
    const Impairment::Decision decision = impairment.next();
    const Time sending = std::max(lineFree, now);
    if (decision.copies == 0 || impairment.losesAfter(sending - now)) {
        return true;
    }
    const Time sent = sending + impairment.sendingTime(piece.size());
    Waiting coming = {sent + decision.delay, decision.copies, decision.overtakenBy, std::move(piece)};
    if (waitingBytes + coming.cost() > byteLimit) {
        return false;
    }
    lineFree = sent;
    waitingBytes += coming.cost();
    waiting.push_back(std::move(coming));
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
