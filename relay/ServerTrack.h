#pragma once

#include "relay/Recording.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace relay {

/// What a server said to one client, and when.
struct ServerTrack
{
    struct Line
    {
        Duration at;  ///< since the client connected
        Transport transport;
        std::string bytes;
    };

    std::uint16_t qport;  ///< the one of its Welcome: with it the client's datagrams begin
    std::vector<Line> lines;
};

/// What a client's datagram begins with; nothing where it is too short.
std::optional<std::uint16_t> qportOf(const std::string& datagram);

/// The server's side towards one client: the first one that it welcomed and that sent its qport in a
/// datagram, or else the first one that it welcomed. Throws std::runtime_error where it welcomed nobody.
ServerTrack serverSide(const std::vector<Chunk>& recording);

}  // namespace relay
