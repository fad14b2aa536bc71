// The real client in a real match, measured: its start, the pace of its frames, how smoothly others fly.
#include "GUIClient/Helpers.h"
#include "GUIClient/VTEntryPoint.h"
#include "GUIClient/drawGL.h"
#include "engine/Engine.h"
#include "engine/ResourceManager.h"
#include "network/NetworkHelper.h"
#include "scene/SceneGraph.h"

#include <SDL.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <map>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr std::chrono::seconds warmUp{5};  // until the ships are there and the caches warm

/// One foreign ship as a frame showed it.
struct Shown
{
    Clock::time_point at;
    Vector3 position;
    Vector3 velocities[2];    ///< the two newest measured ones, units a second
    unsigned int serverTime;  ///< of its newest state, milliseconds
    bool isFullState;         ///< the newest state was shown at once, not blended to
};

Clock::time_point warmFrom;
Clock::time_point endOfMatch;
std::vector<double> frameIntervals;             // milliseconds between the beginnings of two frames
std::vector<double> frameWork;                  // milliseconds within drawGL
std::vector<double> deviations;                 // world units, in steps without a full state
std::vector<double> fullStateDeviations;        // world units, in steps that show a full state
std::map<unsigned long long, Shown> lastShown;  // by id

// ---- the start

template <class Work>
void printTime(const char* what, Work work)
{
    const Clock::time_point begin = Clock::now();
    work();
    std::printf("| %s | %.1f |\n", what, Milliseconds(Clock::now() - begin).count());
}

/// The client's start up to its first frame. Loads everything that the client would load later on first
/// sight.
bool start(const std::string& port)
{
    ResourceManager* resources = nullptr;
    bool connected = false;
    std::printf("\n| start | ms |\n|---|---|\n");
    printTime("connection",
              [&] { connected = NetworkHelper::getInstance()->connect("127.0.0.1", port, 10); });
    if (!connected) {
        return false;
    }
    printTime("window", [] { VT.init(); });
    resources = ResourceManager::getInstance();
    for (const char* name : {"skybox.png", "texture-white.png", "carrier-texture-white.png", "BOOOM.png"}) {
        printTime(name, [&] { resources->precacheTexture(name); });
    }
    for (const char* name : {"fighter.obj", "shot.obj", "carrier.obj"}) {
        printTime(name, [&] { resources->precacheModel(name); });
    }
    printTime("font", [&] { resources->precacheFont("arial.ttf"); });
    printTime("controller", [] { VTEntryPoint::getInstance()->init(); });
    printTime("first frame", drawGL);
    return true;
}

// ---- the match

/// Distance between the drawn position and the position predicted from the nearest velocity. Includes
/// sideways and backward jumps.
double deviation(const Shown& before, const Shown& now)
{
    const float seconds = std::chrono::duration<float>(now.at - before.at).count();
    float least = std::numeric_limits<float>::infinity();
    for (const Shown* shown : {&before, &now}) {
        for (const Vector3& velocity : shown->velocities) {
            least = std::min(least, now.position.distance(before.position + velocity * seconds));
        }
    }
    return static_cast<double>(least);
}

Shown shownNow(const Transform& ship, Clock::time_point at)
{
    const bool isFullState = ship.serverTime[0] == ship.serverTime[2];
    return {at, ship.position, {ship.velocity[0], ship.velocity[1]}, ship.serverTime[0], isFullState};
}

/// A frame draws a ship at the pose of the frame before. But it draws a full state that it has just taken.
void sampleShips(Clock::time_point at)
{
    const auto* ships = SceneGraph::getInstance()->getListOfType(SGT_PLAYER);
    if (ships == nullptr) {
        return;
    }
    std::map<unsigned long long, Shown> shown;
    for (const Transform* ship : *ships) {
        const Shown now = shownNow(*ship, at);
        const auto before = lastShown.find(ship->id);
        if (ship->id != NetworkHelper::getInstance()->getThisPlayerID() && before != lastShown.end() &&
            at > warmFrom) {
            const bool showsFullState = now.isFullState && now.serverTime != before->second.serverTime;
            (showsFullState ? fullStateDeviations : deviations).push_back(deviation(before->second, now));
        }
        shown.emplace(ship->id, now);
    }
    lastShown = std::move(shown);
}

void measuredFrame()
{
    static Clock::time_point lastBegin;
    const Clock::time_point begin = Clock::now();
    drawGL();
    const Clock::time_point end = Clock::now();
    if (lastBegin > warmFrom) {
        frameIntervals.push_back(Milliseconds(begin - lastBegin).count());
        frameWork.push_back(Milliseconds(end - begin).count());
    }
    lastBegin = begin;
    sampleShips(end);
    if (end > endOfMatch) {
        Helpers::stop();
    }
}

void printPercentiles(const char* what, std::vector<double> values)
{
    if (values.empty()) {
        std::printf("| %s | none | | | 0 |\n", what);
        return;
    }
    std::sort(values.begin(), values.end());
    const auto at = [&](std::size_t percent) { return values[(values.size() - 1) * percent / 100]; };
    std::printf("| %s | %.2f | %.2f | %.2f | %zu |\n", what, at(50), at(99), values.back(), values.size());
}

}  // namespace

int main(int argc, char** argv)
{
    const int seconds = argc == 3 ? std::atoi(argv[2]) : 0;  // 0 also for a text that is no number
    if (seconds <= 0) {
        std::fprintf(stderr,
                     "usage: vantor_bench_play PORT SECONDS, at least 1; see bench/play-measurements\n");
        return 2;
    }
    if (!start(argv[1])) {
        return 1;
    }
    warmFrom = Clock::now() + warmUp;
    endOfMatch = warmFrom + std::chrono::seconds(seconds);
    Helpers::registerMainLoopFunction(measuredFrame, 60.0F);
    Helpers::run();
    if (frameIntervals.empty() || deviations.empty()) {
        std::fprintf(stderr, "vantor_bench_play: no frames or no ships measured\n");
        return 1;
    }
    std::printf("\n| | median | 99 of 100 | worst | of |\n|---|---|---|---|---|\n");
    printPercentiles("from frame to frame, ms", frameIntervals);
    printPercentiles("work in a frame, ms", frameWork);
    printPercentiles("deviation in a step that shows a full state, units", fullStateDeviations);
    printPercentiles("deviation in any other step, units", deviations);
    NetworkHelper::getInstance()->disconnect();
    SDL_Quit();
    return 0;
}
