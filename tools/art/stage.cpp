// vantor-stage: a server for one client, which shows what the lines on standard input ask for. The first line
// of output is the port. tools/art/photograph uses it.
//
//   camera X Y Z                                 puts the viewer there, without a ship
//   own X Y Z TEAM                               puts the viewer's ship there, turned like the view
//   ship RIGHT UP AHEAD TEAM HEADING CLIMB BANK  angles in degrees: to the left, up, right wing down
//   shot RIGHT UP AHEAD TEAM
//   explosion RIGHT UP AHEAD                     appears at "explode"
//   explode                                      in the order of the lines; explosions last a second
//   wait REPORTS                                 of the client, 20 a second; prints heading and climb
//
// TEAM is "blue" or "red". Ships, shots and explosions are placed relative to the viewer and the view at the
// newest "camera" or "own".
#include "network/Messages.h"
#include "peer/ScriptedServer.h"

#include <cmath>
#include <iostream>
#include <sstream>
#include <stdexcept>

namespace {

constexpr std::uint64_t ownShip = 1;
constexpr Vector3 cameraOffset(0.0F, 2.0F, -5.0F);  // the client's camera in the own ship's frame
constexpr float degree = 3.14159265F / 180.0F;      // radians

Quaternion pose(float heading, float climb, float bank)
{
    return Quaternion::FromAxisAngle(heading * degree, {0.0F, 1.0F, 0.0F}) *
           Quaternion::FromAxisAngle(-climb * degree, {1.0F, 0.0F, 0.0F}) *
           Quaternion::FromAxisAngle(bank * degree, {0.0F, 0.0F, 1.0F});
}

class Stage
{
public:
    Stage()
    {
        std::cout << server.port() << std::endl;
        awaitClient([this] { return server.record().connected; });
        server.sendTcp(messages::welcomeFrame({ownShip}, 1));
    }

    /// Throws std::runtime_error if the client stops reporting.
    void perform(std::istringstream line)
    {
        std::string verb, team;
        Vector3 place;
        float heading = 0.0F, climb = 0.0F, bank = 0.0F;
        line >> verb;
        if (verb == "wait") {
            std::size_t reports = 0;
            line >> reports;
            awaitReports(reports);
            printView();
        } else if (verb == "explode") {
            for (const std::uint64_t shot : exploding) {
                server.sendTcp(messages::destroyFrame(shot));
            }
        } else if (line >> place.x >> place.y >> place.z) {
            line >> team >> heading >> climb >> bank;
            if (verb == "camera" || verb == "own") {
                putViewer(place, verb == "camera", team == "blue");
            } else {
                putObject(verb, origin + view.rotate({-place.x, place.y, place.z}), team == "blue",
                          view * pose(heading, climb, bank));
            }
        }
    }

private:
    template <class Condition>
    static void awaitClient(Condition condition)
    {
        if (!peer::eventually(condition, std::chrono::seconds(20))) {
            throw std::runtime_error("the client does not connect or no longer reports");
        }
    }

    void awaitReports(std::size_t count)
    {
        const std::size_t goal = server.record().datagrams.size() + count;
        awaitClient([&] { return server.record().datagrams.size() >= goal; });
    }

    void printView()
    {
        const Vector3 ahead = server.lastSteering().orientation.rotate({0.0F, 0.0F, 1.0F});
        std::cout << std::atan2(ahead.x, ahead.z) / degree << ' '
                  << std::atan2(ahead.y, std::hypot(ahead.x, ahead.z)) / degree << std::endl;
    }

    void putViewer(const Vector3& place, bool isCamera, bool blue)
    {
        origin = place;
        view = server.lastSteering().orientation;
        if (!isCamera) {
            server.sendTcp(messages::infoFrame(messages::ShipState{ownShip, blue, place, view}));
            return;
        }
        // Without a ship of its own, the client's camera stays where the ship last took it.
        server.sendTcp(messages::infoFrame(messages::ShipState{ownShip, blue, place - cameraOffset}));
        awaitReports(3);
        server.sendTcp(messages::destroyFrame(ownShip));
    }

    void putObject(const std::string& kind, const Vector3& place, bool blue, const Quaternion& orientation)
    {
        const std::uint64_t id = nextId++;
        if (kind == "ship") {
            server.sendTcp(messages::infoFrame(messages::ShipState{id, blue, place, orientation}));
            return;
        }
        server.sendTcp(messages::infoFrame(messages::ShotState{id, blue, place}));
        if (kind == "explosion") {  // the client shows one where a shot ends
            exploding.push_back(id);
        }
    }

    peer::ScriptedServer server;
    Vector3 origin = {};  ///< of the places of objects, in world units
    Quaternion view = {};
    std::uint64_t nextId = 1000;  ///< the client numbers its explosions from 2 on
    std::vector<std::uint64_t> exploding;
};

}  // namespace

int main()
try {
    Stage stage;
    for (std::string line; std::getline(std::cin, line);) {
        stage.perform(std::istringstream(line));
    }
    return 0;
} catch (const std::exception& error) {
    std::cerr << "vantor-stage: " << error.what() << '\n';
    return 1;
}
