#pragma once

#include "relay/Impairment.h"
#include "relay/Recording.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace relay {

struct RelayConfig
{
    std::uint16_t port = 0;  ///< to listen on, of 127.0.0.1; 0: any free one
    std::string serverHost;
    std::string serverPort;
    Conditions conditions;
    std::uint32_t seed = 1;
    std::optional<Duration> cutAfter;      ///< age at which a connection, or a flow of datagrams, breaks
    RecordingWriter* recording = nullptr;  ///< not owned; none: nothing is recorded
    std::function<void(const std::string& line)> log = [](const std::string&) {};

    void record(const Flow& flow, Chunk::Kind kind, const char* data = nullptr, std::size_t size = 0) const
    {
        if (recording != nullptr) {
            recording->write(flow, kind, data, size);
        }
    }
};

}  // namespace relay
