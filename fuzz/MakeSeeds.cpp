// Writes the fuzz target's committed seeds: make_fuzz_seeds FOLDER
#include "tests/support/Messages.h"

#include <cstdio>
#include <fstream>
#include <utility>

namespace {

std::string ship(std::uint64_t id)
{
    support::Ship data;
    data.id = id;
    return support::shipInfo(data);
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_fuzz_seeds FOLDER\n");
        return 2;
    }
    const std::string shot = support::shotInfo(9, true, {1, 2, 3}, {4, 5, 6});
    const std::pair<const char*, std::string> seeds[] = {
        {"game",
         support::welcome(7, 1) + ship(7) + shot + support::update(7, 1100, {1, 1, 1}) + support::destroy(9)},
        {"carrier", ship(0) + support::destroy(0) + ship(0) + support::update(0, 5, {})},
        {"explosion_ids", ship(2) + shot + support::destroy(9) + support::destroy(2) + ship(2)},
        {"last_id", ship(~std::uint64_t{0}) + support::destroy(~std::uint64_t{0})},
        {"bad_types", support::frame(0, "x") + support::frame(6, "") + support::frame(4, "x") + ship(1)},
        {"stuck", ship(1) + std::string(2, '\0') + ship(2)}};
    for (const auto& [name, stream] : seeds) {
        // Split in the middle, two frames in between.
        std::ofstream(std::string(argv[1]) + "/" + name, std::ios::binary) << '\x80' << '\x02' << stream;
    }
    return 0;
}
