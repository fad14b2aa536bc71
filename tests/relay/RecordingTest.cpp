#include "relay/ServerTrack.h"

#include <gtest/gtest.h>

#include <unistd.h>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

using namespace relay;

namespace {

constexpr Flow toClient = {Transport::stream, 1, Direction::toClient};
constexpr Flow toServer = {Transport::datagrams, 7, Direction::toServer};

class Recording : public testing::Test
{
protected:
    Recording()
    {
        RecordingWriter writer(path);
        writer.write(toClient, Chunk::Kind::opened);
        writer.write(toClient, Chunk::Kind::bytes, "a\0b", 3);
        writer.write(toServer, Chunk::Kind::bytes, "", 0);
        writer.write(toClient, Chunk::Kind::closed);
        std::ifstream file(path, std::ios::binary);
        whole = {std::istreambuf_iterator<char>(file), {}};
    }
    ~Recording() override { std::filesystem::remove(path); }

    /// How many chunks are read from a file of these bytes, and what reading warns of; or why it is refused.
    std::string reading(const std::string& bytes) const
    {
        std::ofstream(path, std::ios::binary) << bytes;
        return readingFile(path);
    }
    static std::string readingFile(const std::string& path)
    {
        std::string warning;
        try {
            const auto chunks = readRecording(path, [&](const std::string& line) { warning = "; " + line; });
            return std::to_string(chunks.size()) + " chunks" + warning;
        } catch (const std::runtime_error& error) {
            return error.what();
        }
    }

    const std::string path = testing::TempDir() + "recording-" + std::to_string(getpid());
    std::string whole;
};

}  // namespace

TEST_F(Recording, CutAnywhereGivesItsWholeChunksAndSaysWhereItBreaksOff)
{
    const std::size_t ends[] = {8, 8 + 19, 8 + 2 * 19 + 3, 8 + 3 * 19 + 3};
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const std::string said = reading(whole.substr(0, size));
        if (size < 8) {
            EXPECT_EQ(said, path + " is no recording of this version");
            continue;
        }
        const std::size_t* const end = std::upper_bound(std::begin(ends), std::end(ends), size) - 1;
        const std::string warning = "; " + path + " breaks off within a chunk at offset " +
                                    std::to_string(*end) + "; all before it is used";
        EXPECT_EQ(said, std::to_string(end - ends) + " chunks" + (size == *end ? "" : warning));
    }
    EXPECT_EQ(reading(whole), "4 chunks");
}

TEST_F(Recording, ThatIsGarbledIsRefusedWithThePlace)
{
    const auto readingWith = [this](std::size_t offset, char byte) {
        std::string garbled = whole;
        garbled[offset] = byte;
        return reading(garbled);
    };
    EXPECT_EQ(readingWith(7, '\2'), path + " is no recording of this version");
    // The time (in the far future), the transport, the direction, the kind, the size of what has no bytes.
    for (const std::size_t offset : {7U, 12U, 13U, 14U, 15U}) {
        EXPECT_EQ(readingWith(8 + offset, '\x7F'), path + " is garbled at offset 8") << offset;
    }
    EXPECT_EQ(readingWith(8 + 5, '\1'), path + " is garbled at offset 27") << "the second chunk is older";
    EXPECT_EQ(readingWith(8 + 19 + 18, '\x7F'), path + " is garbled at offset 27") << "a huge size";
    EXPECT_EQ(readingFile("/dev/zero"), "/dev/zero is no regular file");
    EXPECT_EQ(readingFile("/no/such/file"), "cannot read /no/such/file: No such file or directory");
}

TEST(Replayable, IsOnlyARecordingWithAWelcome)
{
    const std::string endless("\x05\0\x05\xFF\xFF\xFF\xFF", 7);
    EXPECT_THROW(serverSide({}), std::runtime_error);
    EXPECT_THROW(serverSide({{Duration(0), toClient, Chunk::Kind::bytes, endless}}), std::runtime_error);
}
