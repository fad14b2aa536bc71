#include "tools/relay/DatagramLine.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace relay {

bool DatagramLine::push(Time now, std::string datagram)
{
    const Fate fate = impairment.next();
    if (waitingBytes + datagram.size() > byteLimit) {
        return false;
    }
    if (fate.copies == 0) {
        return true;
    }
    lastDue = std::max(lastDue, now + fate.delay);
    waitingBytes += datagram.size();
    std::deque<Waiting>& queue = fate.overtakenBy == 0 ? ordered : held;
    queue.push_back({lastDue, pushed++, fate.copies, fate.overtakenBy, std::move(datagram)});
    return true;
}

std::optional<std::string> DatagramLine::pop(Time now)
{
    releaseOverdue(now);
    if (ordered.empty() || ordered.front().due > now) {
        return std::nullopt;
    }
    if (ordered.front().copies > 1) {
        --ordered.front().copies;
        return ordered.front().bytes;
    }
    Waiting leaving = std::move(ordered.front());
    ordered.pop_front();
    waitingBytes -= leaving.bytes.size();
    releaseOvertaken(now, leaving.number);
    return std::move(leaving.bytes);
}

std::optional<Time> DatagramLine::nextDue() const
{
    if (ordered.empty() && held.empty()) {
        return std::nullopt;
    }
    const Time first = ordered.empty() ? Time::max() : ordered.front().due;
    return held.empty() ? first : std::min(first, held.front().due + holdLimit);
}

void DatagramLine::releaseOverdue(Time now)
{
    while (!held.empty() && held.front().due + holdLimit <= now) {
        ordered.push_front(std::move(held.front()));
        ordered.front().due = now;
        held.pop_front();
    }
}

/// The released leave before everything else, in the order in which they came.
void DatagramLine::releaseOvertaken(Time now, std::uint64_t by)
{
    auto place = ordered.begin();
    for (auto waiting = held.begin(); waiting != held.end();) {
        if (waiting->number > by || --waiting->overtakenBy > 0) {
            ++waiting;
            continue;
        }
        waiting->due = now;
        place = std::next(ordered.insert(place, std::move(*waiting)));
        waiting = held.erase(waiting);
    }
}

}  // namespace relay
