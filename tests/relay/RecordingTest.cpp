#include "network/Messages.h"
#include "relay/Replay.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <unistd.h>
#include <csignal>
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

    void write(const Flow& flow, const std::string& bytes)
    {
        writer.write(flow, Chunk::BYTES, bytes.data(), bytes.size());
    }
    /// The number of chunks and the warning, or the reason why the reader refuses these bytes.
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
    const std::string foreign = path + " is no recording of this version";
    std::vector<std::string> log;
    RecordingWriter writer{path, [this](const std::string& line) { log.push_back(line); }};
    const std::string header{std::istreambuf_iterator(std::ifstream(path).rdbuf()), {}};
    /// Microseconds, transport, number, direction, kind; in `good` with their length before and bytes behind.
    const std::string chunk = "\x08\1\x10\0\x18\1\x20\0\x28\0"s;
    const std::string good = "\xA3\x01" + chunk + "\x32\x96\x01" + std::string(150, 'x');
};

}  // namespace

TEST_F(Recording, CutAnywhereKeepsItsWholeChunks)
{
    const std::string whole = header + good + good + good;
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const std::size_t rest = std::max(size, header.size()) - header.size(), chunks = rest / good.size();
        const std::string warning = "; " + path + " breaks off within chunk " + std::to_string(chunks + 1) +
                                    "; all before it is used";
        const std::string expected =
            std::to_string(chunks) + " chunks" + (rest % good.size() == 0 ? "" : warning);
        EXPECT_EQ(reading(whole.substr(0, size)), size < header.size() ? foreign : expected);
    }
}

TEST_F(Recording, EndsOnceWhereTheDiskIsFull)
{
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    write({Transport::datagrams, 1, toServer}, "whole");
    const rlimit full{std::filesystem::file_size(path) + 5, limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &full);
    write({Transport::datagrams, 1, toServer}, "too much");
    setrlimit(RLIMIT_FSIZE, &limit);
    write({Transport::datagrams, 1, toServer}, "too late");
    EXPECT_TRUE(writer.hasFailed());
    const std::string line = "the recording ends here: cannot record into " + path + ": File too large";
    EXPECT_EQ(log, std::vector<std::string>{line});
    EXPECT_EQ(readingFile(path), "1 chunks; " + path + " breaks off within chunk 2; all before it is used");
}

TEST_F(Recording, ThatIsGarbledIsRefusedWithThePlace)
{
    const std::string largest = "\x8E\x80\x04" + chunk + "\x32\x80\x80\x04" + std::string(65'536, 'x');
    EXPECT_EQ(reading(header + largest + good), "2 chunks");
    for (const std::string& garbled :
         {"\x0A\x08"s + '\0' + chunk.substr(2),                          // before the chunk before it
          "\x11\x08\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x7F" + chunk.substr(2),  // thousands of years later
          "\x0A" + chunk.substr(0, 9) + '\7',                            // no such kind
          "\x08" + chunk.substr(0, 8),                                   // no kind
          "\x0D" + chunk.substr(0, 9) + "\1\x32\1x"s,                    // bytes of what has none
          "\x8F\x80\x04" + chunk + "\x32\x81\x80\x04" + std::string(65'537, 'x'),  // too many bytes
          "\xFF\xFF\xFF\x7F"s, "\x80\x80\x80\x80\x10"s, std::string(11, '\xFF'),   // no length
          std::string(1000, '\0')}) {
        EXPECT_EQ(reading(header + good + garbled), path + " is garbled at chunk 2") << garbled.substr(0, 40);
    }
    std::string newer = header;
    ++newer.back();
    EXPECT_EQ(reading(newer + good), foreign);
    EXPECT_EQ(reading(std::string(100'000, '\0')), foreign);
    EXPECT_EQ(readingFile("/dev/zero"), "/dev/zero is no regular file");
    EXPECT_EQ(readingFile("/no/such/file"), "cannot read /no/such/file: No such file or directory");
}

TEST_F(Recording, GivesTheTrackOfTheFirstPlayer)
{
    EXPECT_THROW(readServerTrack(path, {}), std::runtime_error) << "nobody is welcomed";
    const auto track = [this] {
        std::string bytes;
        for (const ServerTrack::Piece& piece : readServerTrack(path, {}).pieces) {
            bytes += piece.bytes + ' ';
        }
        return bytes;
    };
    const auto welcome = [](std::uint32_t qport) { return messages::welcomeFrame({}, qport); };
    write({Transport::stream, 1, toClient}, "\x05\0\x05\xFF\xFF\xFF\xFF"s);
    write({Transport::stream, 2, toServer}, welcome(9));
    write({Transport::stream, 3, toClient}, welcome(5) + "more");
    EXPECT_EQ(track(), welcome(5) + "more ") << "of the first spectator where nobody plays";
    write({Transport::stream, 4, toClient}, welcome(6).substr(0, 3));
    write({Transport::stream, 4, toClient}, welcome(6).substr(3));
    for (const std::string& bytes : {"\6"s, "\6\1"s, "\6\0!"s, "\6\0!!"s}) {
        const auto number = static_cast<std::uint32_t>(bytes.size());
        write({Transport::datagrams, number, toServer}, bytes);
        write({Transport::datagrams, number, toClient}, "datagram" + bytes);
    }
    write({Transport::stream, 3, toClient}, "another's");
    write({Transport::stream, 4, toClient}, "last words");
    EXPECT_EQ(track(), welcome(6).substr(0, 3) + " " + welcome(6).substr(3) + " datagram\6\0! last words "s);
}
