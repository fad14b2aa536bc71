// The real client, in a match that reaches it through the real relay.
#include "tests/support/VirtualDisplay.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>

using namespace std::chrono_literals;
using support::Picture;
using support::Process;

namespace {

/// A program that tells its port once it is ready.
class Service
{
public:
    explicit Service(const std::vector<std::string>& command) : process(command)
    {
        if (!support::eventually([this] { return process.hasPrinted("\n"); }, 20s)) {
            throw std::runtime_error(command.front() + " is not ready; it said: " + process.output());
        }
        const std::string line = process.output().substr(0, process.output().find('\n'));
        port = line.substr(line.rfind(':') + 1);
    }

    Process process;
    std::string port;
};

/// A client on a display of its own; what it prints is added to the report of a test that fails.
class Player
{
public:
    explicit Player(const std::string& port)
        : client(support::clientCommand(display.name(), {"--host", "127.0.0.1", "--port", port}))
    {
    }
    ~Player()
    {
        if (testing::Test::HasFailure()) {
            std::cout << "---- the client: " << client.end(0s) << "\n" << client.output() << "----\n";
        }
    }

    /// A picture of the screen, also left in a file beside the test.
    Picture photograph(const std::string& name) const
    {
        std::filesystem::create_directories(VANTOR_PICTURES);
        const std::string path = VANTOR_PICTURES "/" + name + ".png";
        display.run("import -silent -window root -depth 8 " + path);
        return Picture(support::outputOf({"convert", path, "-depth", "8", "ppm:-"}));
    }

    support::VirtualDisplay display;
    Process client;
};

constexpr support::Region position = {250, 0, 500, 24};  // the display's text
constexpr support::Region sky = {0, 80, 800, 340};       // above the own ship, below the texts

bool isInMatch(const Picture& picture)
{
    return picture.count(position, &support::Pixel::isWhite) > 100;
}

/// The paint of a blue ship or shot, however dark; neither the sky nor an explosion has it.
bool isBluePaint(support::Pixel pixel)
{
    return pixel.blue > 50 && 6 * pixel.red < pixel.blue && 6 * pixel.green < pixel.blue;
}

/// Whether blue ships are at other places of the sky. The own ship rests below it, or has fallen.
bool showsMotion(const Picture& before, const Picture& after)
{
    int moved = 0;
    for (int y = sky.y; y < sky.y + sky.height; ++y) {
        for (int x = sky.x; x < sky.x + sky.width; ++x) {
            moved += isBluePaint(before.at(x, y)) != isBluePaint(after.at(x, y)) ? 1 : 0;
        }
    }
    constexpr int speck = 8;  // pixels; a ship 200 units away covers about 30
    return moved > speck;
}

}  // namespace

TEST(MatchOverRelay, StaysConnectedForAMinuteOfLossAndReorderingAndShowsMovingShips)
{
    Service server({VANTOR_SERVER, "--port", "0", "--bots", "16", "--seed", "5"});
    Service relay({VANTOR_RELAY, "--to", "127.0.0.1:" + server.port, "--latency", "80", "--jitter", "30",
                   "--loss", "5", "--reorder", "5"});
    EXPECT_TRUE(relay.process.hasPrinted("80±30 ms, loss 5%, reorder 5%"));
    Player player(relay.port);
    ASSERT_TRUE(support::eventually([&] { return relay.process.hasPrinted("connection 1: opened"); }, 40s));
    const auto connected = support::Clock::now();
    int moving = 0;
    for (int shot = 1; shot <= 6; ++shot) {
        std::this_thread::sleep_until(connected + shot * 9s);
        const std::string name = "bad-network-" + std::to_string(shot);
        const Picture before = player.photograph(name + "a");
        std::this_thread::sleep_for(700ms);
        const Picture after = player.photograph(name + "b");
        EXPECT_TRUE(shot > 1 || isInMatch(after)) << "at first nobody aims at a newcomer";
        moving += showsMotion(before, after) ? 1 : 0;
    }
    EXPECT_GE(moving, 4) << "of 6 pairs of pictures";  // at times all blue ships are out of sight
    std::this_thread::sleep_until(connected + 61s);
    EXPECT_TRUE(player.client.isRunning());
    EXPECT_FALSE(relay.process.hasPrinted("connection 1: broken"));
    player.display.xdotool("keydown Escape");
    EXPECT_EQ(player.client.end(), "status 0");
    relay.process.signal(SIGTERM);
    EXPECT_EQ(relay.process.end(), "status 0");
}

TEST(MatchOverRelay, AReplayIsAMatchThatEndsWithStatusZero)
{
    Service replay({VANTOR_RELAY, "--replay", VANTOR_RECORDINGS "/short-match.rec"});
    Player player(replay.port);
    ASSERT_TRUE(support::eventually([&] { return replay.process.hasPrinted("client 1: connected"); }, 40s));
    std::optional<Picture> picture;
    EXPECT_TRUE(support::eventually(
        [&] {
            picture = player.photograph("replay");
            return isInMatch(*picture);
        },
        6s));
    EXPECT_EQ(player.client.end(), "status 0");
    EXPECT_TRUE(
        support::eventually([&] { return replay.process.hasPrinted("client 1: played to the end"); }));
}
