#pragma once

#include "relay/Recording.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace relay {

/// How a relay hangs up a connection at its age.
enum class Cut : std::uint8_t
{
    close,
    reset,
    half  ///< closes after half of the next piece, which mostly ends within a message
};

/// What a relay or a replay does. `to` and `replay` exclude one another.
struct RelayConfig
{
    std::uint16_t port = 0;  ///< to listen on, of 127.0.0.1; 0: any free one
    std::string serverHost;
    std::string serverPort;
    Conditions conditions;
    std::uint32_t seed = 1;
    std::optional<double> cutAfter;  ///< s; age at which a connection, or a flow of datagrams, breaks
    Cut cut = Cut::close;
    std::string recordPath;  ///< empty: record nothing
    std::string replayPath;  ///< empty: pass on to the server
    double replaySpeed = 1;
    std::function<void(const std::string& line)> log = [](const std::string&) {};
    std::shared_ptr<RecordingWriter> recording = nullptr;  ///< the relay opens it once it has its port

    void record(const Flow& flow, Chunk::Kind kind, const char* data = nullptr, std::size_t size = 0) const
    {
        if (recording != nullptr) {
            recording->write(flow, kind, data, size);
        }
    }
    /// When a connection that opens now breaks.
    Time cutTime() const;
};

/// Reads the command line of vantor-relay. Returns the status to end with, if any: 0 after --help and
/// --version, 2 after a bad command line. Then the text for the user has been printed.
std::optional<int> readCommandLine(int argc, const char* const* argv, RelayConfig& config);

/// The faults in words, such as "80±30 ms, loss 5%, duplicate 1%, 8 kB/s".
std::string describe(const Conditions& conditions);

/// The faults, the seed where there are any, and the cut.
std::string describe(const RelayConfig& config);

}  // namespace relay
