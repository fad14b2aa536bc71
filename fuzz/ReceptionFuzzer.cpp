// Hostile bytes on the way from the TCP connection into the scene.
//
// An input is: one byte that says where the stream is split in two chunks (in 256ths of its length), one byte
// that says how many frames are run in between, and the stream.
#include "network/MessageSerializer.h"
#include "network/NetworkEvent.h"
#include "tests/hostile/Arena.h"

#include <google/protobuf/message.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr std::size_t optionsSize = 2;
constexpr int framesAfterwards = 4;

void require(bool condition, const char* what)
{
    if (!condition) {
        std::fprintf(stderr, "%s\n", what);
        std::abort();
    }
}

// All messages of a run, one behind the other.
void appendMessages(std::string& out, const std::string& run, std::string& leftover)
{
    for (const auto& event : MessageSerializer::deserializeMessageArray(run.data(), run.size(), &leftover)) {
        out.push_back(static_cast<char>(event->messageType));
        event->message->AppendToString(&out);
    }
}

// Where the stream happens to be split must not matter to what arrives.
void requireTheSplitNotToMatter(const std::string& first, const std::string& second)
{
    std::string atOnce, inTwo, tailAtOnce, tailInTwo;
    appendMessages(atOnce, first + second, tailAtOnce);
    appendMessages(inTwo, first, tailInTwo);
    appendMessages(inTwo, second, tailInTwo);
    require(atOnce == inTwo && tailAtOnce == tailInTwo, "the split changed what arrived");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < optionsSize) {
        return 0;
    }
    static Arena& arena = *new Arena;
    const std::string stream(reinterpret_cast<const char*>(data) + optionsSize, size - optionsSize);
    const std::size_t split = stream.size() * data[0] / 256U;
    const std::string first = stream.substr(0, split);
    const std::string second = stream.substr(split);

    requireTheSplitNotToMatter(first, second);
    arena.reset();
    arena.receive(first);
    arena.runFrames(data[1] % 8);
    arena.receive(second);
    arena.runFrames(framesAfterwards);
    require(Arena::isConsistent(), "the scene is out of order");
    return 0;
}
