// Reads a recording, as a replay does.
#include "fuzz/FuzzInput.h"
#include "relay/Replay.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const InputFile file(".rec");
    try {
        relay::Duration previous = relay::Duration::min();
        for (const auto& piece :
             relay::readServerTrack(file.holding(data, size), [](const std::string&) {}).pieces) {
            require(piece.at >= previous, "the track runs backwards");
            previous = piece.at;
        }
    } catch (const std::runtime_error&) {  // how a bad recording is refused
    }
    return 0;
}
