#pragma once

#include "peer/ScriptedServer.h"
#include "tests/support/VirtualDisplay.h"

#include <gtest/gtest.h>

#include <functional>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

using namespace std::chrono_literals;

/// A client that is connected to a scripted server and sends updates; it has not been welcomed yet.
///
/// What the client prints is added to the report of a test that fails.
class GameSession
{
public:
    static constexpr std::uint64_t ownId = 7;
    static constexpr std::uint16_t qport = 0xBEEF;

    /// Starts the client with more arguments.
    explicit GameSession(std::vector<std::string> arguments = {})
    {
        const std::vector<std::string> address = {"--host", "127.0.0.1", "--port", server.port()};
        arguments.insert(arguments.end(), address.begin(), address.end());
        client.emplace(support::clientCommand(display.name(), arguments));
        const auto sends = [this] { return !server.record().datagrams.empty(); };
        peer::eventually([&] { return sends() || !client->isRunning(); }, 40s);
        if (!sends()) {
            throw std::runtime_error("the client sends no datagram; it printed:\n" + client->output());
        }
    }
    ~GameSession()
    {
        if (testing::Test::HasFailure()) {
            std::cout << "---- the client: " << client->end(0s) << "\n" << client->output() << "----\n";
        }
    }

    /// Welcomes the client and gives it its ship, then waits until the mouse has come to rest.
    void join(const messages::ShipState& ownShip)
    {
        constexpr std::uint32_t beyondQport = 0x10000;  // only the low 16 bits count
        server.sendTcp(messages::welcomeFrame({ownId}, qport + beyondQport) + messages::infoFrame(ownShip));
        EXPECT_TRUE(awaitUpdate([](const auto& update) { return update.qport == qport; }));
        // the frames in which the first mouse reading turns the view
        const std::size_t before = server.record().datagrams.size();
        peer::eventually([&] { return server.record().datagrams.size() > before + 6; });
    }

    /// Waits until the newest update is like this.
    bool awaitUpdate(const std::function<bool(const peer::SteeringDatagram&)>& wanted) const
    {
        return peer::eventually([&] { return wanted(server.lastSteering()); }, 15s);
    }

    /// Announces the same eight ships again and again.
    void flood();

    support::VirtualDisplay display;
    peer::ScriptedServer server;
    std::optional<support::Process> client;
};

/// A ship far from the carriers, which thus are nowhere in sight.
inline messages::ShipState lonelyShip()
{
    return {GameSession::ownId, false, Vector3(0.0F, 0.0F, 3000.0F)};
}

/// A ship that faces the viewer's back: the viewer sits 5 units ahead of it and sees all but it.
inline messages::ShipState shipBehind(Vector3 viewer)
{
    return {GameSession::ownId, false, viewer - Vector3(0, 2, 5), Quaternion(0, 0, 1, 0)};
}

/// The frames of eight ships, 20 to 27, seen by a viewer at the place. They show four sides of a fighter of
/// each team, blue above red. The viewer looks along +z with +y up, so its right is -x.
inline std::string parade(Vector3 viewer)
{
    std::string frames;
    for (unsigned int i = 0; i < 8; ++i) {
        const auto column = static_cast<float>(i % 4);
        const Vector3 place(7.5F - 5.0F * column, i < 4 ? 1.3F : -1.7F, 18.0F);
        const auto turn = Quaternion::FromAxisAngle(1.5707963F * column + 0.1F, Vector3(0, 1, 0));
        frames += messages::infoFrame(messages::ShipState{20 + i, i < 4, viewer + place, turn});
    }
    return frames;
}

inline void GameSession::flood()
{
    for (int i = 0; i < 1000; ++i) {
        server.sendTcp(parade({0, 4, 60}));
        server.sendUdp(parade({0, 4, 60}));
    }
}
