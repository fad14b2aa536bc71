// The main function of a fuzz target without libFuzzer: plays each file of a folder.
#include "fuzz/FuzzInput.h"

#include <iterator>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv)
{
    require(argc == 2 && !std::filesystem::is_empty(argv[1]), "usage: PROGRAM FOLDER-WITH-INPUTS");
    for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
        std::printf("%s\n", entry.path().c_str());
        std::fflush(stdout);
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(file), {});
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
}
