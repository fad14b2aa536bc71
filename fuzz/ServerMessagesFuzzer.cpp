// Plays what a server sends into the client's scene: pieces of three TCP streams, and datagrams.
//
// An input is a list of pieces. A piece is a byte, a size and bytes. The byte modulo 4 is the socket (3: a
// datagram); divided by 4 it is the number of frames that the game draws afterwards.
#include "fuzz/FuzzInput.h"
#include "tests/hostile/Arena.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Arena arena;
    AbstractPacketReceiver& receiver = arena.receiver;
    std::vector<boost::asio::ip::tcp::socket> streams;
    for (int i = 0; i < 3; ++i) {
        streams.emplace_back(arena.service);
    }
    for (FuzzInput input(data, size); !input.isEmpty();) {
        const unsigned socketAndFrames = input.byte(), number = socketAndFrames % 4;
        std::string bytes = input.bytes();
        if (number < streams.size()) {
            receiver.handleTCPReceive({}, bytes.data(), bytes.size(), &streams[number]);
        } else {  // not the PacketReceiver's own: that of the watchdog takes the fuzzer's alarm
            receiver.AbstractPacketReceiver::handleUDPReceive({}, bytes.data(), bytes.size(),
                                                              receiver.getUDPSocket());
        }
        arena.receive("", static_cast<int>(socketAndFrames / 4));
    }
    arena.receive("");
    const std::string fault = arena.faultOfScene();
    require(fault.empty(), fault);
    return 0;
}
