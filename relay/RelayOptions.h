#pragma once

#include "relay/RelayConfig.h"
#include "service/LegacyCommandLine.h"

#include <string>
#include <variant>

namespace relay {

struct RelayOptions
{
    RelayConfig config;      ///< without the recording, which is not open yet
    std::string recordPath;  ///< empty: record nothing
    std::string replayPath;  ///< empty: pass on to the server of the config
    double replaySpeed = 1;
};

/// Reads the command line of the relay; takes nothing for granted.
std::variant<RelayOptions, commandline::End> readRelayOptions(int argc, const char* const* argv);

/// The faults in words, such as "80±30 ms, loss 5%, duplicate 1%, reorder 2%".
std::string describe(const Conditions& conditions);

/// The same with the seed, where there are faults, and the cut.
std::string describe(const RelayConfig& config);

}  // namespace relay
