#pragma once

#include "tools/relay/Recording.h"

#include <cstdint>
#include <string>
#include <vector>

namespace relay {

/// What a server said to one client, and when.
struct Script
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

/// Whether a client's datagram begins with the qport.
bool carriesQport(const std::string& datagram, std::uint16_t qport);

/// The server's side towards one client: the first one that it welcomed and that sent its qport in a
/// datagram, or else the first one that it welcomed. Throws std::runtime_error where it welcomed nobody.
Script serverSide(const std::vector<Chunk>& recording);

}  // namespace relay
