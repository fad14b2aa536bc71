#include "peer/Endpoints.h"
#include "relay/Replay.h"

#include <gtest/gtest.h>

using namespace relay;
using namespace std::chrono_literals;

// Twice: the second client gets the same, from the start.
TEST(Replay, KeepsTheTimesAndWaitsForTheRightQport)
{
    const ServerTrack track = readServerTrack(VANTOR_RECORDINGS "/short-match.rec", {});
    std::string expected;
    Duration first{0};
    for (const auto& [at, transport, bytes] : track.pieces) {
        const bool isStream = transport == Transport::stream;
        first = isStream || first.count() > 0 ? first : at;
        expected += isStream ? "" : bytes;
    }
    EXPECT_LT(first, 1s) << "the player came after six seconds";
    const std::string qport = {static_cast<char>(track.qport & 0xFFU), static_cast<char>(track.qport >> 8U)};
    const std::string wrong = {qport[0], static_cast<char>(~qport[1])};
    constexpr int speed = 10;
    peer::Endpoints ends;
    std::vector<std::string> log;
    Replayer replayer(ends.io, 0, track, speed, [&log](const std::string& line) { log.push_back(line); });
    replayer.start();
    const auto server = peer::loopback(replayer.port());
    for (int round = 0; round < 2; ++round) {
        peer::StreamEnd& stream = ends.connect(replayer.port());
        peer::DatagramEnd &player = ends.addDatagrams(), &stranger = ends.addDatagrams();
        player.socket.set_option(
            boost::asio::socket_base::receive_buffer_size(1 << 20));  // for a busy machine
        for (const std::string& datagram : {std::string(), qport.substr(0, 1), wrong}) {
            stranger.send(datagram, server);
        }
        ends.pass(first / speed + 200ms);
        const Time answered = Clock::now();
        player.send(qport, server);
        peer::StreamEnd &second = ends.connect(replayer.port()), &third = ends.connect(replayer.port());
        EXPECT_TRUE(ends.await([&] { return second.end && third.end; }));
        stranger.send(qport, server);
        EXPECT_TRUE(ends.await([&] { return stream.end == boost::asio::error::eof; }));
        const auto rest = (track.pieces.back().at - first) / speed;
        EXPECT_GT(Clock::now() - answered, rest - 10ms);  // it noticed a little late that it had to wait
        EXPECT_LT(Clock::now() - answered, rest + 5s);
        std::string received;
        for (const peer::Datagram& datagram : player.received) {
            received += datagram.bytes;
        }
        EXPECT_TRUE(received == expected) << "nothing is left out";
        EXPECT_TRUE(stranger.received.empty());
    }
    peer::StreamEnd& leaving = ends.connect(replayer.port());
    ends.pass(first / speed + 200ms);  // so that the replay waits
    leaving.reset();
    EXPECT_TRUE(ends.await([&] { return log.back() == "client 3: left"; }));
    ends.connect(replayer.port());
    EXPECT_TRUE(ends.await([&] { return log.back() == "client 4: connected"; }));
    const std::string turnedAway = "turning away clients: another one is watching";
    EXPECT_EQ(log,
              (std::vector<std::string>{"client 1: connected", turnedAway, "client 1: played to the end",
                                        "client 2: connected", turnedAway, "client 2: played to the end",
                                        "client 3: connected", "client 3: left", "client 4: connected"}));
    replayer.stop();
    ends.io.restart();
    ends.io.run_for(5s);
    EXPECT_TRUE(ends.io.stopped()) << "no work is left";
}
