#include "server/net/DatagramPacker.h"

#include <cassert>
#include <utility>

namespace practice {

void DatagramPacker::add(const std::string& frame)
{
    assert(frame.size() <= largestDatagram);
    if (datagrams.empty() || datagrams.back().size() + frame.size() > largestDatagram) {
        datagrams.emplace_back();
        datagrams.back().reserve(largestDatagram);
    }
    datagrams.back() += frame;
}

std::vector<std::string> DatagramPacker::take()
{
    if (datagrams.empty()) {
        datagrams.emplace_back();
    }
    return std::exchange(datagrams, {});
}

}  // namespace practice
