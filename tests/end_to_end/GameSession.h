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
    /// Presses Escape and tells how the client ended.
    std::string leave();
    /// What the screen shows after some frames.
    support::Picture soon() const;

    /// The point so far to the right, up and ahead of the viewer, in world units, as the client shows it now.
    Vector3 inView(float right, float up, float ahead) const;
    /// The square of 50 window pixels around where that point is on the screen.
    static support::Region onScreen(float right, float up, float ahead);

    support::VirtualDisplay display;
    peer::ScriptedServer server;
    std::optional<support::Process> client;

private:
    messages::ShipState own;
};

/// A ship far from the carriers, which thus are nowhere in sight.
messages::ShipState lonelyShip(std::uint64_t id = GameSession::ownId);
