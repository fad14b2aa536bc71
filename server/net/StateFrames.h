#pragma once

#include "server/match/Match.h"

#include <cstdint>
#include <string>

namespace practice {

// The match's state as the protocol's server-to-client frames. Timestamps are match time, so that a client
// measures true velocities from any two states.

std::string welcomeFrame(const Ship& ship, std::uint16_t qport, const Match& match);
std::string shipInfoFrame(const Ship& ship, const Match& match);
std::string shotInfoFrame(const Shot& shot, std::uint32_t timestamp);

}  // namespace practice
