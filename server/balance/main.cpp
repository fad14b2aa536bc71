// Measures what players meet, for tuning the bots. Prints one line for each kind of pilot.
#include "server/balance/ScriptedPilots.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace {

using practice::FlightRecord;

constexpr std::uint32_t seeds = 40;

void report(const std::string& name, practice::Difficulty difficulty, const practice::Pilot& pilot)
{
    int inView = 0, kills = 0, deaths = 0, hits = 0, surprises = 0;
    std::vector<float> firstKills, firstDamages;
    for (std::uint32_t seed = 1; seed <= seeds; ++seed) {
        const FlightRecord flight = practice::fly(seed, difficulty, 90.0F, pilot);
        inView += flight.enemyInView >= 2.0F ? 1 : 0;
        kills += flight.kills;
        deaths += flight.deaths;
        hits += static_cast<int>(flight.unseen.size());
        surprises += static_cast<int>(std::count_if(flight.unseen.begin(), flight.unseen.end(),
                                                    [](float unseen) { return unseen > 3.0F; }));
        firstKills.push_back(flight.firstKill);
        firstDamages.push_back(flight.firstDamage);
    }
    const auto median = [](std::vector<float> times) {
        std::sort(times.begin(), times.end());
        const float middle = times[times.size() / 2];
        return middle == FlightRecord::never ? std::string("never") : std::to_string(middle).substr(0, 4);
    };
    std::printf("%-24s %7d %6d %7d %5d %10d %11s %13s\n", name.c_str(), inView, kills, deaths, hits,
                surprises, median(firstKills).c_str(), median(firstDamages).c_str());
}

}  // namespace

int main()
{
    std::printf(
        "40 flights of 90 seconds in view  kills  deaths  hits  by unseen  first kill  first damage\n");
    const std::pair<const char*, practice::Difficulty> levels[] = {{"easy", practice::Difficulty::easy},
                                                                   {"normal", practice::Difficulty::normal},
                                                                   {"hard", practice::Difficulty::hard}};
    for (const auto& [name, difficulty] : levels) {
        report(std::string("newcomer, ") + name, difficulty, practice::newcomer(4.0F));
        report(std::string("average human, ") + name, difficulty, practice::averageHuman());
    }
    return 0;
}
