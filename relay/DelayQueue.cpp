#include "relay/DelayQueue.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace relay {

bool DelayQueue::push(Time now, std::string datagram)
{
    const Fate fate = impairment.next();
    lastDue = std::max(lastDue, now + fate.delay);
    Waiting coming = {lastDue, pushed++, fate.copies, fate.overtakenBy, std::move(datagram)};
    if (waitingBytes + coming.cost() > byteLimit) {
        return false;
    }
    if (fate.copies == 0) {
        return true;
    }
    waitingBytes += coming.cost();
    (fate.overtakenBy == 0 ? ordered : held).push_back(std::move(coming));
    return true;
}

std::optional<std::string> DelayQueue::pop(Time now)
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
    waitingBytes -= leaving.cost();
    releaseOvertaken(leaving);
    return std::move(leaving.bytes);
}

std::optional<Time> DelayQueue::nextDue() const
{
    if (ordered.empty() && held.empty()) {
        return std::nullopt;
    }
    const Time first = ordered.empty() ? Time::max() : ordered.front().due;
    return held.empty() ? first : std::min(first, held.front().due + holdLimit);
}

/// Not before those that were due before: a caller that comes late finds the same order.
void DelayQueue::releaseOverdue(Time now)
{
    if (held.empty()) {
        return;
    }
    const Time limit = held.front().due + holdLimit;
    if (limit <= now && (ordered.empty() || limit < ordered.front().due)) {
        ordered.push_front(std::move(held.front()));
        ordered.front().due = limit;
        held.pop_front();
    }
}

/// The released leave before everything else, in the order in which they came.
void DelayQueue::releaseOvertaken(const Waiting& by)
{
    auto place = ordered.begin();
    for (auto waiting = held.begin(); waiting != held.end();) {
        if (waiting->number > by.number || --waiting->overtakenBy > 0) {
            ++waiting;
            continue;
        }
        waiting->due = by.due;
        place = std::next(ordered.insert(place, std::move(*waiting)));
        waiting = held.erase(waiting);
    }
}

}  // namespace relay
