#include "network/Messages.h"
#include "peer/Endpoints.h"
#include "relay/Replay.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>
#include <algorithm>
#include <filesystem>
#include <fstream>

using namespace relay;
using namespace std::chrono_literals;
using namespace std::string_literals;

namespace {

class Recording : public testing::Test
{
protected:
    ~Recording() override { std::filesystem::remove(path); }

    /// The number of chunks and the warning, or the reason why the reader refuses a file. It holds these
    /// bytes, and zeros up to the size.
    std::string reading(const std::string& bytes, std::uintmax_t size = 0) const
    {
        std::ofstream(path, std::ios::binary) << bytes;
        std::filesystem::resize_file(path, std::max(size, std::filesystem::file_size(path)));
        std::string warning;
        try {
            const auto chunks = readRecording(path, [&](const std::string& line) { warning = "; " + line; });
            return std::to_string(chunks.size()) + " chunks" + warning;
        } catch (const std::runtime_error& error) {
            return error.what();
        }
    }

    const std::string path = testing::TempDir() + "recording-" + std::to_string(getpid());
    RecordingWriter writer{path, {}};
    const std::string header{std::istreambuf_iterator(std::ifstream(path).rdbuf()), {}};
    /// Microseconds, transport, number, direction, kind; in `good` with their length before and bytes behind.
    const std::string chunk = "\x08\1\x10\0\x18\1\x20\0\x28\0"s;
    const std::string good = "\xA3\x01" + chunk + "\x32\x96\x01" + std::string(150, 'x');
};

}  // namespace

TEST_F(Recording, CutAnywhereIsUsedAndGarbledIsRefused)
{
    EXPECT_EQ(reading(header + good + good), "2 chunks");
    for (std::size_t size = 1; size < good.size(); ++size) {
        EXPECT_EQ(reading(header + good + good.substr(0, size)),
                  "1 chunks; " + path + " breaks off within chunk 2; all before it is used");
    }
    for (const std::string& garbled :
         {"\x0A\x08"s + '\0' + chunk.substr(2),                          // before the chunk before it
          "\x11\x08\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x7F" + chunk.substr(2),  // thousands of years later
          "\x8F\x80\x04" + chunk + "\x32\x81\x80\x04" + std::string(65'537, 'x'),  // too many bytes
          "\x0C" + chunk + "\x3B\x3C",                                             // an unknown field
          "\xFF\xFF\xFF\x7F"s, std::string(11, '\xFF')}) {                         // no length
        EXPECT_EQ(reading(header + good + garbled), path + " is garbled at chunk 2");
    }
    EXPECT_EQ(reading(header, (512U << 20U) + 1U), path + " is larger than 512 MiB");
    EXPECT_EQ(reading(good), path + " is no recording of this version");
}

TEST_F(Recording, IsWrittenToFilesOnly)
{
    std::filesystem::remove(path);
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);  // nobody reads the pipe
    for (const std::string& name : {path, "/no/such/folder"s}) {
        EXPECT_THROW(RecordingWriter(name, {}), std::runtime_error) << name;
    }
}

TEST_F(Recording, GivesTheTrackOfTheFirstPlayer)
{
    EXPECT_THROW(readServerTrack(path, {}), std::runtime_error) << "nobody is welcomed";
    const auto write = [this](const Flow& flow, const std::string& bytes) {
        writer.write(flow, Chunk::BYTES, bytes.data(), bytes.size());
    };
    const std::string spectator = messages::welcomeFrame({}, 5), player = messages::welcomeFrame({}, 6);
    write({Transport::stream, 1, Direction::toClient}, "\x05\0\x05\xFF\xFF\xFF\xFF"s);
    write({Transport::stream, 2, Direction::toServer}, player);
    write({Transport::stream, 3, Direction::toClient}, spectator);
    write({Transport::stream, 4, Direction::toClient}, player.substr(0, 3));
    write({Transport::stream, 4, Direction::toClient}, player.substr(3));
    for (const std::string& bytes : {"\6"s, "\6\1"s, "\6\0!"s, "\6\0!!"s}) {
        const auto number = static_cast<std::uint32_t>(bytes.size());
        write({Transport::datagrams, number, Direction::toServer}, bytes);
        write({Transport::datagrams, number, Direction::toClient}, "datagram" + bytes);
    }
    write({Transport::stream, 3, Direction::toClient}, "another's");
    write({Transport::stream, 4, Direction::toClient}, "last words");
    std::string track;
    for (const ServerTrack::Piece& piece : readServerTrack(path, {}).pieces) {
        track += piece.bytes;
    }
    EXPECT_EQ(track, player + "datagram\6\0!last words"s);
    EXPECT_LT(readServerTrack(VANTOR_TESTS "relay/recordings/short-match.rec", {}).pieces.front().at, 1s)
        << "the player came after six seconds";
}

// Twice: the second client gets the same, from the start. The third leaves while the replay waits. The
// fourth sends nothing.
TEST(Replay, KeepsTheTimesAndWaitsForTheRightQport)
{
    const ServerTrack track = {0x0106,
                               {{0s, Transport::stream, "welcome"},
                                {1s, Transport::datagrams, "first"},
                                {2s, Transport::stream, " back"},
                                {3s, Transport::datagrams, "last"}}};
    peer::Endpoints ends;
    std::vector<std::string> log;
    Replayer replayer(
        ends.io, 0, track, 10, [&log](const std::string& line) { log.push_back(line); }, 5s);
    replayer.start();
    const auto server = peer::loopback(replayer.port());
    for (int round = 0; round < 2; ++round) {
        peer::StreamEnd& stream = ends.connect(replayer.port());
        peer::DatagramEnd &player = ends.addDatagrams(), &stranger = ends.addDatagrams();
        for (const char* const datagram : {"", "\6", "\6\2"}) {
            stranger.send(datagram, server);
        }
        ends.pass(300ms);
        const Time answered = Clock::now();
        player.send("\6\1", server);
        peer::StreamEnd& second = ends.connect(replayer.port());
        EXPECT_TRUE(ends.await([&] { return second.end.failed(); }));
        stranger.send("\6\1", server);
        EXPECT_TRUE(ends.await([&] { return stream.end == boost::asio::error::eof; }));
        EXPECT_GE(Clock::now(), answered + 190ms);  // it noticed a little late that it had to wait
        EXPECT_EQ(stream.received, "welcome back");
        ASSERT_EQ(player.received.size(), 2U);
        EXPECT_EQ(player.received.front().bytes + player.received.back().bytes, "firstlast");
        EXPECT_TRUE(stranger.received.empty());
    }
    peer::StreamEnd& leaving = ends.connect(replayer.port());
    ends.pass(300ms);
    leaving.reset();
    EXPECT_TRUE(ends.await([&] { return log.back() == "client 3: left"; }));
    ends.connect(replayer.port());
    EXPECT_TRUE(ends.await([&] { return log.back() == "client 4: sent no datagram for 5 s"; }));
    EXPECT_EQ(std::count(log.begin(), log.end(), "turning away clients: another one is watching"), 2);
}
