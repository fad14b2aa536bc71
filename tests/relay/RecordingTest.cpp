#include "network/Messages.h"
#include "relay/Replay.h"

#include <gtest/gtest.h>

#include <unistd.h>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

using namespace relay;
using namespace std::string_literals;

namespace {

constexpr auto toServer = Direction::toServer;
constexpr auto toClient = Direction::toClient;

class Recording : public testing::Test
{
protected:
    ~Recording() override { std::filesystem::remove(path); }

    void stream(std::uint32_t number, Direction direction, const std::string& bytes)
    {
        writer.write({Transport::stream, number, direction}, Chunk::BYTES, bytes.data(), bytes.size());
    }
    void datagram(std::uint32_t number, Direction direction, const std::string& bytes)
    {
        writer.write({Transport::datagrams, number, direction}, Chunk::BYTES, bytes.data(), bytes.size());
    }
    std::string content() const
    {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    /// Reads a file of these bytes. Returns the number of chunks and the warning, or the reason for refusal.
    std::string reading(const std::string& bytes) const
    {
        std::ofstream(path, std::ios::binary) << bytes;
        return readingFile(path);
    }
    static std::string readingFile(const std::string& path)
    {
        std::string warning;
        return resultOf([&] {
            const auto chunks = readRecording(path, [&](const std::string& line) { warning = "; " + line; });
            return std::to_string(chunks.size()) + " chunks" + warning;
        });
    }
    /// The bytes of the server's track, or the reason why there is none.
    std::string track() const
    {
        std::string bytes;
        return resultOf([&] {
            for (const auto& chunk : readServerTrack(path, {}).pieces) {
                bytes += chunk.bytes + ' ';
            }
            return bytes;
        });
    }
    template <class Function>
    static std::string resultOf(Function function)
    {
        try {
            return function();
        } catch (const std::runtime_error& error) {
            return error.what();
        }
    }

    const std::string path = testing::TempDir() + "recording-" + std::to_string(getpid());
    RecordingWriter writer{path};
};

}  // namespace

TEST_F(Recording, CutAnywhereKeepsItsWholeChunks)
{
    std::vector<std::size_t> ends = {content().size()};
    for (const std::string& bytes : {"a\0b"s, ""s, std::string(150, 'x')}) {
        stream(1, toClient, bytes);
        ends.push_back(content().size());
    }
    writer.write({Transport::datagrams, 7, toServer}, Chunk::CLOSED);
    const std::string whole = content();
    ends.push_back(whole.size());
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const auto end = std::upper_bound(ends.begin(), ends.end(), size) - ends.begin();
        const std::string warning =
            "; " + path + " breaks off within chunk " + std::to_string(end) + "; all before it is used";
        const bool isWhole = std::count(ends.begin(), ends.end(), size) > 0;
        EXPECT_EQ(reading(whole.substr(0, size)),
                  end == 0 ? path + " is no recording of this version"
                           : std::to_string(end - 1) + " chunks" + (isWhole ? "" : warning));
    }
}

TEST_F(Recording, ThatIsGarbledIsRefusedWithThePlace)
{
    const std::string header = content();
    // Microseconds, transport, number, direction, kind.
    const std::string chunk = "\x08\1\x10\0\x18\1\x20\0\x28\0"s;
    const auto with = [&chunk](std::size_t index, char value) {
        std::string changed = chunk;
        changed[index] = value;
        return "\x0A" + changed;
    };
    const std::string good = "\x0A" + chunk;
    EXPECT_EQ(reading(header + good + good), "2 chunks");
    const std::string largest = "\x32\x80\x80\x04" + std::string(65'536, 'x');
    EXPECT_EQ(reading(header + good + "\x8E\x80\x04" + chunk + largest), "2 chunks");
    const std::string cases[] = {
        with(1, 0),                                                    // older than the chunk before it
        "\x11\x08\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x7F" + chunk.substr(2),  // thousands of years later
        with(3, 7),
        with(7, 7),
        with(9, 7),                                  // no such transport, direction, kind
        "\x08" + chunk.substr(0, 8),                 // no kind
        "\x0D" + chunk.substr(0, 9) + "\1\x32\1x"s,  // bytes of what has none
        "\x8F\x80\x04" + chunk + "\x32\x81\x80\x04" + std::string(65'537, 'x'),
        "\xFF\xFF\xFF\x7F",
        "\x80\x80\x80\x80\x10",
        std::string(11, '\xFF'),
        std::string(1000, '\0')};
    for (const std::string& garbled : cases) {
        EXPECT_EQ(reading(header + good + garbled), path + " is garbled at chunk 2") << garbled.substr(0, 40);
    }
    std::string newer = header;
    ++newer.back();
    EXPECT_EQ(reading(newer + good), path + " is no recording of this version");
    EXPECT_EQ(reading(std::string(100'000, '\0')), path + " is no recording of this version");
    EXPECT_EQ(readingFile("/dev/zero"), "/dev/zero is no regular file");
    EXPECT_EQ(readingFile("/no/such/file"), "cannot read /no/such/file: No such file or directory");
}

TEST_F(Recording, GivesTheTrackOfTheFirstPlayer)
{
    const std::string nobody = path + ": no server welcomes a client here";
    EXPECT_EQ(track(), nobody);
    const auto welcome = [](std::uint32_t qport) { return messages::welcomeFrame({}, qport); };
    stream(1, toClient, "\x05\0\x05\xFF\xFF\xFF\xFF"s);
    stream(2, toServer, welcome(9));
    EXPECT_EQ(track(), nobody);
    stream(4, toClient, welcome(5) + "more");
    EXPECT_EQ(track(), welcome(5) + "more ") << "of the first spectator where nobody plays";
    stream(3, toClient, welcome(6).substr(0, 3));
    stream(3, toClient, welcome(6).substr(3));
    for (const std::string& bytes : {"\6"s, "\6\1"s, "\6\0!"s, "\6\0!!"s}) {
        datagram(static_cast<std::uint32_t>(bytes.size()), toServer, bytes);
        datagram(static_cast<std::uint32_t>(bytes.size()), toClient, "datagram" + bytes);
    }
    stream(4, toClient, "another's");
    stream(3, toClient, "last words");
    writer.write({Transport::stream, 3, toClient}, Chunk::CLOSED);
    EXPECT_EQ(track(), welcome(6).substr(0, 3) + " " + welcome(6).substr(3) + " datagram\6\0! last words "s);
}
