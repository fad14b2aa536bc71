// Plays hostile bytes of the TCP connection into the scene.
//
// An input has three parts:
// - a byte that splits the stream in two chunks, in 256ths of its length
// - a byte for the number of frames after each chunk, modulo 8
// - the stream
#include "tests/hostile/Arena.h"

#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2) {
        return 0;
    }
    static Arena& arena = *new Arena;
    const std::string stream(reinterpret_cast<const char*>(data) + 2, size - 2);
    const std::size_t split = stream.size() * data[0] / 256U;
    const std::string problem = arena.play({stream.substr(0, split), stream.substr(split)}, data[1] % 8);
    if (!problem.empty()) {
        std::fprintf(stderr, "%s\n", problem.c_str());
        std::abort();
    }
    return 0;
}
