// The real client in a real match, measured: its start, the pace of its frames, and how smoothly others fly.
#include "GUIClient/Helpers.h"
#include "GUIClient/VTEntryPoint.h"
#include "bench/FrameProbe.h"
#include "bench/MotionProbe.h"
#include "engine/Engine.h"
#include "engine/ModelLoader.h"
#include "engine/OpenGL.h"
#include "engine/ResourceManager.h"
#include "network/NetworkHelper.h"

#include <SDL.h>
#include <SDL_image.h>
#include <assimp/Importer.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

using frame_probe::Clock;
using frame_probe::Frame;
using frame_probe::Seconds;

namespace {

constexpr float framesPerSecond = 60.0F;          // as the client asks for
constexpr auto warmUp = std::chrono::seconds(5);  // until the ships are there and the caches warm

Clock::time_point endOfMatch;

double milliseconds(Seconds time)
{
    return time.count() * 1000.0;
}

template <class Work>
Seconds timeOf(Work work)
{
    const Clock::time_point begin = Clock::now();
    work();
    return Clock::now() - begin;
}

template <class Work>
Seconds leastOf(int repetitions, Work work)
{
    Seconds least = timeOf(work);
    for (int i = 1; i < repetitions; ++i) {
        least = std::min(least, timeOf(work));
    }
    return least;
}

void import(const std::string& path)
{
    Assimp::Importer importer;
    importer.ReadFile(path, modelImportFlags);
}

void decode(const std::string& path)
{
    SDL_FreeSurface(IMG_Load(path.c_str()));
}

void printRow(const char* what, Seconds time)
{
    std::printf("| %s | %.1f | | |\n", what, milliseconds(time));
}

// Loads a file as a start does, then five times more, and five times by the library alone.
template <class Precache, class Load, class Library>
Seconds printLoading(const std::string& name, Precache precache, Load load, Library library)
{
    const Seconds time = timeOf([&] { precache(name); });
    const std::string path = ResourceManager::getInstance()->resourceFolder + name;
    const Seconds again = leastOf(5, [&] { load(name); });
    const Seconds alone = leastOf(5, [&] { library(path); });
    std::printf("| %s | %.1f | %.1f | %.1f |\n", name.c_str(), milliseconds(time), milliseconds(again),
                milliseconds(alone));
    return time;
}

Seconds printTextures()
{
    ResourceManager& resources = *ResourceManager::getInstance();
    const auto precache = [&](const std::string& name) { resources.precacheTexture(name); };
    const auto load = [&](const std::string& name) {
        const unsigned int texture = resources.loadTexture(name);
        glFinish();
        glDeleteTextures(1, &texture);
    };
    Seconds sum{};
    for (const char* name : {"skybox.png", "texture-white.png", "carrier-texture-white.png", "BOOOM.png"}) {
        sum += printLoading(name, precache, load, decode);
    }
    return sum;
}

Seconds printModels()
{
    ResourceManager& resources = *ResourceManager::getInstance();
    const auto precache = [&](const std::string& name) { resources.precacheModel(name); };
    const auto load = [&](const std::string& name) { glDeleteLists(resources.loadModel(name), 1); };
    Seconds sum{};
    for (const char* name : {"fighter.obj", "shot.obj", "carrier.obj"}) {
        sum += printLoading(name, precache, load, import);
    }
    return sum;
}

// What the client does until its first frame, with everything loaded that it loads only when it is seen.
bool start(const std::string& port)
{
    bool connected = false;
    const Seconds connecting =
        timeOf([&] { connected = NetworkHelper::getInstance()->connect("127.0.0.1", port, 10); });
    if (!connected) {
        return false;
    }
    const Seconds window = timeOf([] { VT.init(); });
    std::printf(
        "\n| start | ms | once more, least of 5 | the library alone, least of 5 |\n|---|---|---|---|\n");
    printRow("connection", connecting);
    printRow("window", window);
    const Seconds textures = printTextures();
    const Seconds models = printModels();
    const Seconds font = timeOf([] { ResourceManager::getInstance()->precacheFont("arial.ttf"); });
    const Seconds rest = timeOf([] { VTEntryPoint::getInstance()->init(); });
    const Seconds frame = timeOf(frame_probe::runFrame);
    printRow("font", font);
    printRow("controller", rest);
    printRow("first frame", frame);
    printRow("all of these", connecting + window + textures + models + font + rest + frame);
    return true;
}

void measuredFrame()
{
    frame_probe::runFrame();
    const Clock::time_point shown = Clock::now();
    motion_probe::sample(NetworkHelper::getInstance()->getThisPlayerID(), shown);
    if (shown > endOfMatch) {
        Helpers::stop();
    }
}

void printPercentiles(const char* what, std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const auto at = [&](std::size_t percent) { return values[(values.size() - 1) * percent / 100]; };
    std::printf("| %s | %.1f | %.1f | %.1f |\n", what, at(50), at(99), values.back());
}

void printPace(const std::vector<Frame>& frames)
{
    std::vector<double> intervals, work;
    for (std::size_t i = 1; i < frames.size(); ++i) {
        intervals.push_back(milliseconds(frames[i].begin - frames[i - 1].begin));
        work.push_back(milliseconds(frames[i].work()));
    }
    std::printf("\n| ms | median | 99 of 100 | worst of %zu |\n|---|---|---|---|\n", frames.size());
    printPercentiles("from frame to frame", intervals);
    printPercentiles("work in a frame", work);
}

void printShares(const std::vector<Frame>& frames)
{
    Seconds sum{}, steps[frame_probe::stepCount]{};
    for (const Frame& frame : frames) {
        sum += frame.work();
        for (std::size_t i = 0; i < frame_probe::stepCount; ++i) {
            steps[i] += frame.steps[i];
        }
    }
    const Frame& worst = *std::max_element(
        frames.begin(), frames.end(), [](const Frame& a, const Frame& b) { return a.work() < b.work(); });
    std::printf("\n| step | share of the work | mean ms | in the worst frame |\n|---|---|---|---|\n");
    for (std::size_t i = 0; i < frame_probe::stepCount; ++i) {
        std::printf("| %s | %.1f %% | %.3f | %.1f |\n", frame_probe::stepNames[i], steps[i] / sum * 100.0,
                    milliseconds(steps[i]) / static_cast<double>(frames.size()),
                    milliseconds(worst.steps[i]));
    }
}

void printMotion(const motion_probe::Report& report)
{
    std::printf("\n%zu flights of others; of their steps after the warm-up: 99 of 100, largest\n",
                report.flights);
    for (std::size_t measure = 0; measure < motion_probe::measureCount; ++measure) {
        std::printf(
            "\n| %s, in a step with | steps | for the time shown | for the time moved | in even frames |\n"
            "|---|---|---|---|---|\n",
            motion_probe::measureNames[measure]);
        for (std::size_t cause = 0; cause < motion_probe::causeCount; ++cause) {
            const auto& paces = report.amiss[measure][cause];
            std::printf("| %s | %zu |", motion_probe::causeNames[cause], paces[motion_probe::shown].steps);
            for (const motion_probe::Amiss& amiss : paces) {
                std::printf(" %.2f, %.2f |", static_cast<double>(amiss.usual),
                            static_cast<double>(amiss.largest));
            }
            std::printf("\n");
        }
    }
}

}  // namespace

int main(int argc, char** argv)
{
    const int seconds = argc == 3 ? std::atoi(argv[2]) : 0;  // 0 also where it is no number
    if (seconds <= 0) {
        std::fprintf(stderr,
                     "usage: vantor_bench_play PORT SECONDS, at least one second; see "
                     "bench/play-measurements\n");
        return 2;
    }
    if (!start(argv[1])) {
        return 1;
    }
    endOfMatch = Clock::now() + warmUp + std::chrono::seconds(seconds);
    const Clock::time_point warm = Clock::now() + warmUp;
    Helpers::registerMainLoopFunction(measuredFrame, framesPerSecond);
    Helpers::run();
    std::vector<Frame> frames = frame_probe::frames();
    frames.erase(std::remove_if(frames.begin(), frames.end(), [&](const Frame& f) { return f.begin < warm; }),
                 frames.end());
    if (frames.size() < 2) {  // the server went while the client warmed up
        std::fprintf(stderr, "vantor_bench_play: no frames measured\n");
        return 1;
    }
    printPace(frames);
    printShares(frames);
    printMotion(motion_probe::report(warm));
    NetworkHelper::getInstance()->disconnect();
    SDL_Quit();
    return 0;
}
