#include "tests/relay/Milliseconds.h"
#include "tools/relay/Script.h"

#include <gtest/gtest.h>

#include <unistd.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

using namespace relay;

namespace {

constexpr Lane toClient = {Transport::stream, 1, Direction::toClient};
constexpr Lane toServer = {Transport::datagrams, 7, Direction::toServer};

/// A file of this test's own, gone with it.
struct TemporaryFile
{
    std::string path = testing::TempDir() + "recording-" + std::to_string(getpid());
    ~TemporaryFile() { std::filesystem::remove(path); }

    std::string content() const
    {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    void replace(const std::string& bytes) const { std::ofstream(path, std::ios::binary) << bytes; }
};

void writeExample(const std::string& path)
{
    RecordingWriter writer(path);
    writer.write(toClient, Chunk::Kind::opened);
    writer.write(toClient, Chunk::Kind::bytes, "a\0b", 3);
    writer.write(toServer, Chunk::Kind::bytes, "", 0);
    writer.write(toClient, Chunk::Kind::closed);
}

/// What reading warns of or refuses; "" where it does neither.
std::string complaintAbout(const std::string& path)
{
    try {
        std::string warning;
        readRecording(path, [&warning](const std::string& line) { warning = line; });
        return warning;
    } catch (const std::runtime_error& error) {
        return error.what();
    }
}

}  // namespace

TEST(Recording, CutAnywhereGivesItsWholeChunksAndSaysWhereItBreaksOff)
{
    const TemporaryFile file;
    writeExample(file.path);
    const std::string whole = file.content();
    const std::set<std::size_t> ends = {8, 8 + 19, 8 + 2 * 19 + 3, 8 + 3 * 19 + 3};
    for (std::size_t size = 0; size < whole.size(); ++size) {
        file.replace(whole.substr(0, size));
        const std::size_t lastEnd = size < 8 ? 0 : *std::prev(ends.upper_bound(size));
        const std::string warning = file.path + " breaks off within a chunk at offset " +
                                    std::to_string(lastEnd) + "; all before it is used";
        if (size < 8) {
            EXPECT_EQ(complaintAbout(file.path), file.path + " is no recording of this version");
        } else {
            EXPECT_EQ(complaintAbout(file.path), lastEnd == size ? "" : warning);
            const auto chunks = static_cast<std::size_t>(std::distance(ends.begin(), ends.find(lastEnd)));
            EXPECT_EQ(readRecording(file.path, [](const std::string&) {}).size(), chunks);
        }
    }
}

TEST(Recording, ThatIsGarbledIsRefusedWithThePlace)
{
    const TemporaryFile file;
    writeExample(file.path);
    const std::string whole = file.content();
    const struct
    {
        const char* what;
        std::size_t offset;
    } cases[] = {{"version", 7},   {"time", 8 + 7},  {"transport", 8 + 12},     {"direction", 8 + 13},
                 {"kind", 8 + 14}, {"size", 8 + 15}, {"huge size", 8 + 19 + 18}};
    for (const auto& c : cases) {
        std::string garbled = whole;
        garbled[c.offset] = '\x7F';
        file.replace(garbled);
        const std::string said = complaintAbout(file.path);
        EXPECT_EQ(said.find(file.path + " is "), 0U) << c.what << ": " << said;
        EXPECT_EQ(said.find(" at offset ") == std::string::npos, c.offset < 8) << c.what << ": " << said;
    }
    EXPECT_EQ(complaintAbout("/dev/zero"), "/dev/zero is no regular file");
    EXPECT_NE(complaintAbout("/no/such/file").find("/no/such/file: No such file"), std::string::npos);
}

TEST(Recording, WithoutAWelcomeHasNothingToReplay)
{
    EXPECT_THROW(serverSide({}), std::runtime_error);
    EXPECT_THROW(serverSide({{Duration(0), toClient, Chunk::Kind::bytes,
                              std::string("\x05\0\x05\xFF\xFF\xFF\xFF", 7)}}),
                 std::runtime_error);
}
