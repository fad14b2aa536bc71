#include "tests/end_to_end/GameSession.h"

#include <iostream>

using namespace std::chrono_literals;
using messages::ShipState;

GameSession::GameSession(std::vector<std::string> arguments)
{
    const std::vector<std::string> address = {"--host", "127.0.0.1", "--port", server.port()};
    arguments.insert(arguments.end(), address.begin(), address.end());
    client.emplace(support::clientCommand(display.name(), arguments));
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
    constexpr std::uint32_t beyondQport = 0x10000;  // only the low 16 bits count
    server.sendTcp(messages::welcomeFrame({ownId}, qport + beyondQport) + messages::infoFrame(ownShip));
    EXPECT_TRUE(awaitUpdate([](const auto& update) { return update.qport == qport; }));
    std::this_thread::sleep_for(300ms);  // the frames in which the first mouse reading turns the view
}

bool GameSession::awaitUpdate(const std::function<bool(const peer::SteeringDatagram&)>& wanted) const
{
    return peer::eventually([&] { return wanted(server.lastSteering()); }, 5s);
}

ShipState lonelyShip()
{
    return {GameSession::ownId, false, Vector3(0.0F, 0.0F, 3000.0F)};
}

ShipState shipBehind(Vector3 viewer)
{
    return {GameSession::ownId, false, viewer - Vector3(0, 2, 5), Quaternion(0, 0, 1, 0)};
}

// The viewer looks along +z with +y up, so its right is -x.
std::string parade(Vector3 viewer)
{
    std::string frames;
    for (unsigned int i = 0; i < 8; ++i) {
        const auto column = static_cast<float>(i % 4);
        const Vector3 place(7.5F - 5.0F * column, i < 4 ? 1.3F : -1.7F, 18.0F);
        const auto turn = Quaternion::FromAxisAngle(1.5707963F * column + 0.1F, Vector3(0, 1, 0));
        frames += messages::infoFrame(ShipState{20 + i, i < 4, viewer + place, turn});
    }
    return frames;
}
