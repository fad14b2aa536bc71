#pragma once

#include "peer/ScriptedServer.h"
#include "tests/support/VirtualDisplay.h"

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

    /// Starts the client with more arguments, perhaps within another command.
    explicit GameSession(std::vector<std::string> arguments = {},
                         const std::vector<std::string>& wrapper = {});
    ~GameSession();

    /// Welcomes the client and gives it its ship, then waits until the mouse has come to rest.
    void join(const messages::ShipState& ownShip);
    /// Waits until the newest update is like this.
    bool awaitUpdate(const std::function<bool(const peer::SteeringDatagram&)>& wanted) const;
    /// Presses Escape; returns how the client ended.
    std::string leave();

    support::VirtualDisplay display;
    peer::ScriptedServer server;
    std::optional<support::Process> client;
};

/// A ship far from the carriers, which thus are nowhere in sight.
messages::ShipState lonelyShip(std::uint64_t id = GameSession::ownId);

/// A ship that faces the viewer's back: the viewer sits 5 units ahead of it and sees all but it.
messages::ShipState shipBehind(Vector3 viewer, std::uint64_t id = GameSession::ownId);

/// Eight ships seen by a viewer at the place: four sides of a fighter of each team, blue above red.
std::vector<messages::ShipState> parade(Vector3 viewer);
