#include "tests/end_to_end/GameSession.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iostream>

using namespace std::chrono_literals;

GameSession::GameSession(std::vector<std::string> arguments, const std::vector<std::string>& wrapper)
{
    const std::vector<std::string> address = {"--host", "127.0.0.1", "--port", server.port()};
    arguments.insert(arguments.end(), address.begin(), address.end());
    client.emplace(support::clientCommand(display.name(), arguments, wrapper));
    if (!peer::eventually([this] { return !server.record().datagrams.empty(); }, 40s)) {
        throw std::runtime_error("the client sends no datagram; it printed:\n" + client->output());
    }
}

GameSession::~GameSession()
{
    if (testing::Test::HasFailure()) {
        std::cout << "---- the client: " << client->end(0s) << "\n" << client->output() << "----\n";
    }
}

void GameSession::join(const messages::ShipState& ownShip)
{
    own = ownShip;
    server.sendTcp(messages::welcomeFrame({ownId}, 1) + messages::infoFrame(own));
    EXPECT_TRUE(awaitUpdate([](const peer::SteeringDatagram& s) { return s.qport == 1; }));
    std::this_thread::sleep_for(300ms);  // the frames in which the first mouse reading turns the view
}

bool GameSession::awaitUpdate(const std::function<bool(const peer::SteeringDatagram&)>& wanted) const
{
    return peer::eventually([&] { return wanted(server.lastSteering()); }, 5s);
}

std::string GameSession::leave()
{
    display.xdotool("keydown Escape");
    return client->end();
}

support::Picture GameSession::soon() const
{
    std::this_thread::sleep_for(250ms);
    return display.screenshot();
}

Vector3 GameSession::inView(float right, float up, float ahead) const
{
    // The viewer looks along +z with +y up, so its right is -x.
    const Vector3 camera = own.position + own.orientation.rotate(Vector3(0.0F, 2.0F, -5.0F));
    return camera + server.lastSteering().orientation.rotate(Vector3(-right, up, ahead));
}

support::Region GameSession::onScreen(float right, float up, float ahead)
{
    // Half the height, over the tangent of half of 60 degrees.
    const float pixelsPerSlope = 300.0F * std::sqrt(3.0F);
    const int x = static_cast<int>(400.0F + right / ahead * pixelsPerSlope);
    const int y = static_cast<int>(300.0F - up / ahead * pixelsPerSlope);
    return {x - 25, y - 25, 50, 50};
}

messages::ShipState lonelyShip(std::uint64_t id)
{
    messages::ShipState ship;
    ship.id = id;
    ship.position = Vector3(0.0F, 0.0F, 3000.0F);
    return ship;
}
