#include "server/net/StateFrames.h"

#include "network/Messages.h"

namespace practice {

namespace {

messages::ShipState stateOf(const Ship& ship, const Match& match)
{
    return {ship.id,
            ship.team == Team::blue,
            ship.position,
            ship.orientation,
            ship.health,
            ship.name,
            ship.score,
            match.teamScore(Team::red),
            match.teamScore(Team::blue),
            match.timestamp()};
}

}  // namespace

std::string shipInfoFrame(const Ship& ship, const Match& match)
{
    return messages::infoFrame(stateOf(ship, match));
}

std::string shotInfoFrame(const Shot& shot, std::uint32_t timestamp)
{
    return messages::infoFrame(
        messages::ShotState{shot.id, shot.team == Team::blue, shot.position, shot.velocity, timestamp});
}

std::string welcomeFrame(const Ship& ship, std::uint16_t qport, const Match& match)
{
    return messages::welcomeFrame(stateOf(ship, match), qport);
}

}  // namespace practice
