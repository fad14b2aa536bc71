#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace practice {

/// Gathers frames into as few datagrams as fit, in order and never splitting a frame.
class DatagramPacker
{
public:
    /// Bytes; passes every common link unfragmented and fits the client's 2048-byte buffer.
    static constexpr std::size_t largestDatagram = 1200;

    /// The frame must not be longer than a datagram.
    void add(const std::string& frame);

    /// What has been gathered; never empty, because a client ends itself when it hears nothing: with
    /// nothing to say there is one empty datagram.
    std::vector<std::string> take();

private:
    std::vector<std::string> datagrams;
};

}  // namespace practice
