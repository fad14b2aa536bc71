// The fuzz target's seeds, and whatever it found in the past, run as an ordinary test.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

TEST(FuzzCorpus, EveryCommittedInputPasses)
{
    int inputs = 0;
    testing::internal::CaptureStdout();
    for (const auto& entry : std::filesystem::directory_iterator(VANTOR_FUZZ_CORPUS)) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
        ASSERT_FALSE(bytes.empty()) << entry.path();
        EXPECT_EQ(LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()),
                  0);
        ++inputs;
    }
    testing::internal::GetCapturedStdout();
    EXPECT_GE(inputs, 5);
}
