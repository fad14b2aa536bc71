// What the client tells OpenGL, as apitrace records it, against golden/*.txt: a call a line, in which *
// stands for anything.
#include "tests/end_to_end/GameSession.h"

#include <gtest/gtest.h>

#include <fnmatch.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

using namespace std::chrono_literals;

namespace {

using Calls = std::vector<std::string>;

// "12 f(a = 1, b = {-0.0, 2.00004})" becomes "f(1,0,2)".
std::string plain(const std::string& recorded)
{
    std::string rest = std::regex_replace(recorded, std::regex(R"(^\d+ |\w+ = |[{}& ])"), "");
    std::ostringstream out;
    const std::regex number(R"(-?\d+\.\d+(e-\d+)?|-0\b)");
    for (std::smatch found; std::regex_search(rest, found, number); rest = found.suffix()) {
        out << found.prefix() << std::round(std::stod(found.str()) * 1e4) / 1e4 + 0.0;
    }
    return out.str() + rest;
}

// GL calls as the client made them, and buffer swaps; without questions, which change nothing and which SDL
// may ask too.
Calls recordedCalls(const std::string& file)
{
    std::istringstream dump(support::outputOf({"apitrace", "dump", "--color=never", file}));
    const std::regex wanted(R"(^\d+ gl(XSwap|(?!X|Get).).*\)$)");
    Calls calls;
    for (std::string line; std::getline(dump, line);) {
        if (std::regex_search(line, wanted)) {
            calls.push_back(line);
        }
    }
    return calls;
}

// The calls begin with those of the file.
void expectCalls(const Calls& calls, const std::string& golden)
{
    std::ifstream file(VANTOR_GOLDEN_CALLS + golden);
    std::size_t number = 0;
    for (std::string expected; std::getline(file, expected); ++number) {
        ASSERT_LT(number, calls.size()) << "no " << expected;
        ASSERT_EQ(fnmatch(expected.c_str(), plain(calls[number]).c_str(), 0), 0)
            << plain(calls[number]) << " is not line " << number + 1 << " of " << golden << ": " << expected;
    }
    ASSERT_GT(number, 0U) << "cannot read " << golden;
}

// A blue ship that flies along +x with little health, so that the viewer sits 5 units beside it at (5, 22,
// 30) and looks along +z, and a red shot.
void playTheScene(GameSession& game)
{
    messages::ShipState own = lonelyShip();
    own.blueTeam = true;
    own.health = 5.0F;
    own.position = Vector3(10, 20, 30);
    own.orientation = Quaternion(std::sqrt(0.5F), 0, std::sqrt(0.5F), 0);
    game.join(own);
    game.server.sendTcp(messages::infoFrame(messages::ShotState{8, false, Vector3(10, 20, 90)}));
    std::this_thread::sleep_for(1500ms);  // until the ship has turned
    EXPECT_LT((game.server.lastSteering().orientation - Quaternion()).length(), 1e-4F);
    EXPECT_EQ(game.leave(), "status 0");
}

}  // namespace

TEST(FrameCalls, StartUpAndFrameAreTheGoldenCalls)
{
    std::string folder = std::filesystem::temp_directory_path() / "vantor-trace-XXXXXX";
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    const std::string trace = folder + "/client.trace";
    // SDL 1.2 on top of SDL 2 would add calls that scale the picture. The classic library has no such
    // variable.
    GameSession game({}, {"env", "SDL12COMPAT_OPENGL_SCALING=0", "apitrace", "trace", "-o", trace});
    playTheScene(game);
    const Calls calls = recordedCalls(trace);
    std::filesystem::remove_all(folder);

    const auto isSwap = [](const std::string& call) { return call.find("glXSwap") != std::string::npos; };
    ASSERT_GT(std::count_if(calls.begin(), calls.end(), isSwap), 1);
    const auto lastSwap = std::find_if(calls.rbegin(), calls.rend(), isSwap);
    const Calls frame(std::find_if(lastSwap + 1, calls.rend(), isSwap).base(), lastSwap.base());
    expectCalls(calls, "start-up.txt");
    expectCalls(frame, "frame.txt");
}
