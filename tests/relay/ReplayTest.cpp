#include "tests/relay/FinalScene.h"
#include "tests/relay/Milliseconds.h"
#include "tests/support/Waiting.h"
#include "tools/relay/Replayer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <thread>

using namespace relay;
using namespace std::chrono_literals;

namespace {

const std::string recordings = VANTOR_RECORDINGS;

Script shortMatch()
{
    return serverSide(readRecording(recordings + "/short-match.rec", {}));
}

/// A replayer of the short match on a thread of its own.
class ReplayedMatch
{
public:
    explicit ReplayedMatch(double speed)
        : replayer(io, 0, shortMatch(), speed, [this](const std::string& line) { lastLine = line; }),
          thread([this] {
              replayer.start();
              io.run();
          })
    {
    }
    ~ReplayedMatch() { end(); }

    std::uint16_t port() const { return replayer.port(); }
    /// What the log said last.
    std::string end()
    {
        if (thread.joinable()) {
            boost::asio::post(io, [this] { replayer.stop(); });
            thread.join();
        }
        return lastLine;
    }

private:
    std::string lastLine;
    boost::asio::io_context io;
    Replayer replayer;
    std::thread thread;
};

}  // namespace

TEST(Replay, EndsInTheSameSceneEveryTimeAndAtAnySpeed)
{
    std::ifstream file(recordings + "/short-match.txt");
    const std::string expected((std::istreambuf_iterator<char>(file)), {});
    for (const double speed : {4.0, 4.0, 20.0}) {
        ReplayedMatch match(speed);
        EXPECT_EQ(finalScene(match.port()), expected) << "at speed " << speed;
        EXPECT_EQ(match.end(), "client 1: played to the end");
    }
}

TEST(Replay, KeepsTheRecordedTimesAndWaitsWithDatagramsForAClientWithTheRightQport)
{
    const Script script = shortMatch();
    const auto isDatagram = [](const Script::Line& line) { return line.transport == Transport::datagrams; };
    const auto first = std::find_if(script.lines.begin(), script.lines.end(), isDatagram);
    ASSERT_NE(first, script.lines.end());
    ReplayedMatch match(20);
    boost::asio::io_context io;
    const auto host = boost::asio::ip::address_v4::loopback();
    boost::asio::ip::tcp::socket stream(io);
    stream.connect({host, match.port()});
    boost::asio::ip::udp::socket socket(io, {host, 0}), stranger(io, {host, 0});
    const char qport[] = {static_cast<char>(script.qport & 0xFFU), static_cast<char>(script.qport >> 8U)};
    const char wrong[] = {qport[0], static_cast<char>(~qport[1])};
    stranger.send_to(boost::asio::buffer(wrong), {host, match.port()});
    stranger.send_to(boost::asio::buffer("", 0), {host, match.port()});
    std::this_thread::sleep_for(first->at / 20 + 200ms);
    EXPECT_EQ(stranger.available() + socket.available(), 0U);

    const Time answered = Clock::now();
    socket.send_to(boost::asio::buffer(qport), {host, match.port()});
    std::string received(largestChunk, '\0');
    received.resize(socket.receive(boost::asio::buffer(received)));
    EXPECT_TRUE(received == first->bytes) << "nothing was left out";
    boost::asio::ip::tcp::socket second(io);
    second.connect({host, match.port()});
    boost::system::error_code end, none;
    second.read_some(boost::asio::buffer(received), end);
    EXPECT_EQ(end, boost::asio::error::eof) << "turned away while the first one watches";

    received.resize(largestChunk);
    stream.non_blocking(true);
    socket.non_blocking(true);
    std::ptrdiff_t datagrams = 1;
    EXPECT_TRUE(support::eventually([&] {
        do {
            stream.read_some(boost::asio::buffer(received), end);
        } while (!end);
        while (socket.receive(boost::asio::buffer(received), 0, none) > 0) {
            ++datagrams;
        }
        return end != boost::asio::error::would_block;
    }));
    EXPECT_EQ(end, boost::asio::error::eof);
    EXPECT_EQ(datagrams, std::count_if(script.lines.begin(), script.lines.end(), isDatagram));
    const double rest = inMilliseconds(script.lines.back().at - first->at) / 20;
    const double took = inMilliseconds(Clock::now() - answered);
    EXPECT_GT(took, rest - 10);  // it noticed a little late that it had to wait
    EXPECT_LT(took, rest + 5000);
    EXPECT_EQ(stranger.available(), 0U);
}
