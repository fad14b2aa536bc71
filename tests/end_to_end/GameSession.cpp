#include "tests/end_to_end/GameSession.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iostream>

namespace {

using namespace std::chrono_literals;

const Vector3 cameraOffset(0.0F, 2.0F, -5.0F);  // in the own ship's frame
const float pixelsPerSlope =
    300.0F * std::sqrt(3.0F);  // half the height, over the tangent of half of 60 degrees

std::vector<std::string> clientArguments(const std::string& port, const std::vector<std::string>& more)
{
    std::vector<std::string> arguments = {"--host", "127.0.0.1", "--port", port};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

}  // namespace

GameSession::GameSession(const Options& options)
{
    if (options.windowManager) {
        display.startWindowManager();
    }
    client.emplace(support::ClientProcess::Options{clientArguments(server.port(), options.arguments),
                                                   display.name(), -1, options.wrapper});
    if (!server.awaitConnection() || !server.awaitDatagram()) {
        throw std::runtime_error("the client sends no datagram; it printed:\n" + client->output());
    }
}

GameSession::~GameSession()
{
    if (testing::Test::HasFailure()) {
        std::cout << "---- the client: " << client->end(0s) << ", it printed:\n"
                  << client->output() << "----\n";
    }
}

void GameSession::join(const support::Ship& ownShip)
{
    ownPosition = ownShip.position;
    ownOrientation = ownShip.orientation;
    server.sendTcp(support::welcome(ownId, 1));
    server.sendTcp(support::shipInfo(ownShip));
    EXPECT_TRUE(server.awaitUpdate([](const support::Steering& s) { return s.qport == 1; }));
    std::this_thread::sleep_for(300ms);  // the frames in which the first mouse reading turns the view
}

std::string GameSession::leave()
{
    display.keyDown("Escape");
    return client->end();
}

Vector3 GameSession::inView(float right, float up, float ahead) const
{
    // The viewer looks along +z with +y up, so its right is -x.
    const Vector3 camera = ownPosition + ownOrientation.rotate(cameraOffset);
    return camera + server.lastSteering().orientation.rotate(Vector3(-right, up, ahead));
}

support::Region GameSession::onScreen(float right, float up, float ahead, int half)
{
    const int x = static_cast<int>(400.0F + right / ahead * pixelsPerSlope);
    const int y = static_cast<int>(300.0F - up / ahead * pixelsPerSlope);
    return {x - half, y - half, 2 * half, 2 * half};
}

support::Ship lonelyShip()
{
    support::Ship ship;
    ship.id = GameSession::ownId;
    ship.position = Vector3(0.0F, 0.0F, 3000.0F);
    return ship;
}
