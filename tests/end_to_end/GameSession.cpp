#include "tests/end_to_end/GameSession.h"

#include <gtest/gtest.h>

#include <iostream>

using namespace std::chrono_literals;
using messages::ShipState;

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

void GameSession::join(const ShipState& ownShip)
{
    server.sendTcp(messages::welcomeFrame({ownId}, 1) + messages::infoFrame(ownShip));
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

ShipState lonelyShip(std::uint64_t id)
{
    ShipState ship;
    ship.id = id;
    ship.position = Vector3(0.0F, 0.0F, 3000.0F);
    return ship;
}

ShipState shipBehind(Vector3 viewer, std::uint64_t id)
{
    ShipState ship;
    ship.id = id;
    ship.orientation = Quaternion(0, 0, 1, 0);
    ship.position = viewer - Vector3(0, 2, 5);
    return ship;
}

// The viewer looks along +z with +y up, so its right is -x.
std::vector<ShipState> parade(Vector3 viewer)
{
    std::vector<ShipState> ships;
    for (unsigned int i = 0; i < 8; ++i) {
        const auto column = static_cast<float>(i % 4);
        ShipState ship;
        ship.id = 20 + i;
        ship.blueTeam = i < 4;
        ship.position = viewer + Vector3(7.5F - 5.0F * column, ship.blueTeam ? 1.3F : -1.7F, 18.0F);
        ship.orientation = Quaternion::FromAxisAngle(1.5707963F * column + 0.1F, Vector3(0, 1, 0));
        ships.push_back(ship);
    }
    return ships;
}
