#pragma once

#include "peer/ScriptedServer.h"
#include "tests/support/VirtualDisplay.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

/// A client that is connected to a scripted server and sends updates; it has not been welcomed yet.
///
/// What the client prints is added to the report of a test that fails.
class GameSession
{
public:
    static constexpr std::uint64_t ownId = 7;
    static constexpr std::uint16_t qport = 0xBEEF;

    /// Starts the client with more arguments.
    explicit GameSession(std::vector<std::string> arguments = {});
    ~GameSession();

    /// Welcomes the client and gives it its ship, then waits until the mouse has come to rest.
    void join(const messages::ShipState& ownShip);
    /// Waits until the newest update is like this.
    bool awaitUpdate(const std::function<bool(const peer::SteeringDatagram&)>& wanted) const;

    support::VirtualDisplay display;
    peer::ScriptedServer server;
    std::optional<support::Process> client;
};

/// A ship far from the carriers, which thus are nowhere in sight.
messages::ShipState lonelyShip();

/// A ship that faces the viewer's back: the viewer sits 5 units ahead of it and sees all but it.
messages::ShipState shipBehind(Vector3 viewer);

/// The frames of eight ships, 20 to 27, seen by a viewer at the place: four sides of a fighter of each team,
/// blue above red.
std::string parade(Vector3 viewer);
