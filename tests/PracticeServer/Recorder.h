#pragma once

#include "PracticeServer/MatchObserver.h"

#include <algorithm>
#include <string>
#include <vector>

/// Writes down what a match reports, one word for each event.
class Recorder : public practice::MatchObserver
{
public:
    std::vector<std::string> events;

    void shipAppeared(const practice::Ship&) override { events.emplace_back("appeared"); }
    void shipVanished(const practice::Ship&) override { events.emplace_back("vanished"); }
    void shipDataChanged(const practice::Ship&) override { events.emplace_back("data"); }
    void shotFired(const practice::Shot&) override { events.emplace_back("fired"); }
    void shotEnded(const practice::Shot&) override { events.emplace_back("ended"); }
    void shipExploded(const practice::Ship&) override { events.emplace_back("exploded"); }

    long count(const std::string& event) const { return std::count(events.begin(), events.end(), event); }
};
