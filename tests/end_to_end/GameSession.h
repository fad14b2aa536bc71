#pragma once

#include "tests/support/ClientProcess.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/VirtualDisplay.h"

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

    struct Options
    {
        std::vector<std::string> arguments;
        std::vector<std::string> wrapper;
        bool windowManager = false;
    };

    GameSession() : GameSession(Options()) {}
    explicit GameSession(const Options& options);
    ~GameSession();

    /// Welcomes the client and gives it its ship, then waits until the mouse has come to rest.
    void join(const support::Ship& ownShip);

    /// Presses Escape and tells how the client ended.
    std::string leave();

    /// The point so far to the right, up and ahead of the viewer, in world units, as the client shows it now.
    Vector3 inView(float right, float up, float ahead) const;
    /// The square of window pixels, 2 * half wide, around where that point is on the screen.
    static support::Region onScreen(float right, float up, float ahead, int half);

    support::VirtualDisplay display;
    support::ScriptedServer server;
    std::optional<support::ClientProcess> client;

private:
    Vector3 ownPosition;
    Quaternion ownOrientation;
};

/// An own ship far from the carriers, which thus are nowhere in sight.
support::Ship lonelyShip();
