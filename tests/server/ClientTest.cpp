#include "network/Messages.h"
#include "peer/Endpoints.h"
#include "server/net/ClientInput.h"
#include "server/net/ClientSession.h"
#include "server/net/Limits.h"
#include "server/net/StepClock.h"

#include <gtest/gtest.h>

#include <limits>
#include <map>

using namespace practice;
using namespace std::chrono_literals;

namespace {

constexpr std::uint64_t second = 60;  // steps

/// A session with room for 20,000 bytes, and its client, whose own buffer is small.
struct Connection
{
    Connection()
    {
        using boost::asio::ip::tcp;
        tcp::acceptor acceptor(ends.io, {boost::asio::ip::address_v4::loopback(), 0});
        tcp::socket socket(ends.io, tcp::v4());
        socket.set_option(boost::asio::socket_base::receive_buffer_size(1));
        socket.connect(acceptor.local_endpoint());
        client = &ends.add(std::move(socket));
        session = std::make_shared<ClientSession>(acceptor.accept(), 20000);
        session->start([this](const auto& frame) { qports += std::to_string(frame.qport) + ' '; });
    }

    peer::Endpoints ends;
    peer::StreamEnd* client;
    std::shared_ptr<ClientSession> session;
    std::string qports;  ///< of the frames received
};

}  // namespace

TEST(ClientLimits, TellAGameFromAnAttack)
{
    constexpr std::uint64_t never = 1000 * second;
    const struct
    {
        int datagrams;  ///< with steering, every so many steps
        std::uint64_t every;
        std::uint64_t streamBytes;  ///< in each step
        std::uint64_t garbageEvery;
        std::string reason;  ///< and the second of the drop
    } cases[] = {
        {10, 3, 0, never, ""},
        {11, 3, 0, never, "19: sent more than 200 datagrams a second"},
        {400, 20 * second, 0, never, ""},
        {401, 20 * second, 0, never, "20: sent more than 200 datagrams a second"},  // the first is free
        {0, 3, 0, 10, "20: sent no steering over UDP within 20 s"},
        {1, never, 0, never, "30: sent no datagram for 30 s"},
        {1, 3, 8192 / 60, never, ""},
        {1, 3, 65536, never, "0: sent more than 8192 bytes a second on TCP"},
        {1, 3, 0, second, ""},
        {1, 3, 0, second / 2, "20: sent more than 20 messages without sense"},
    };
    for (const auto& c : cases) {
        ClientLimits limits(ClientLimits::Config(), 0);
        std::string reason;
        for (std::uint64_t step = 1; step <= 120 * second && reason.empty(); ++step) {
            for (int i = 0; i < c.datagrams && step % c.every == 1; ++i) {
                limits.receivedDatagram(step);
                limits.receivedSteering(step);
            }
            limits.receivedStream(c.streamBytes, step);
            if (step % c.garbageEvery == 0) {
                limits.receivedGarbage(step);
            }
            reason = limits.reasonToDrop(step);
            reason.insert(0, reason.empty() ? "" : std::to_string(step / second) + ": ");
        }
        EXPECT_EQ(reason, c.reason);
    }
}

TEST(RateLimitedLog, PassesSomeLinesAndCountsTheOthers)
{
    std::map<std::string, int> lines;
    RateLimitedLog log([&lines](const std::string& line) { ++lines[line]; });
    for (std::uint64_t step = 0; step <= 2 * second; ++step) {
        log.log("join", step);
        log.log("join", step);
        log.afterStep(step);
    }
    EXPECT_EQ(lines, (std::map<std::string, int>{{"join", 100},  // a burst and ten a second
                                                 {"... and 32 more lines like these", 1},
                                                 {"... and 110 more lines like these", 1}}));
}

TEST(StepClock, CatchesUpOrGivesUp)
{
    StepClock clock(10ms);
    clock.start({});
    const auto stepsAt = [&clock](std::chrono::milliseconds time) {
        int steps = 0;
        while (clock.takeStep(StepClock::TimePoint(time))) {
            ++steps;
        }
        return steps;
    };
    EXPECT_EQ(stepsAt(9ms), 0);
    EXPECT_EQ(stepsAt(10ms), 1);
    EXPECT_EQ(stepsAt(55ms), 4);
    EXPECT_EQ(clock.report(), "played 5 steps, latest 35.0 ms behind");
    EXPECT_EQ(stepsAt(1060ms), 1) << "a second of haste";
    EXPECT_EQ(stepsAt(1270ms), 1) << "the next step was due at 1070 ms";
    EXPECT_EQ(clock.report(), "played 7 steps, latest 1000.0 ms behind, 1200.0 ms given up");
}

TEST(ClientInput, OnlySoundSteeringCounts)
{
    ShipInput input;
    const auto meaningOf = [&input](const std::string& bytes) {
        framing::ClientFrame frame;
        EXPECT_EQ(framing::cutClientFrame(bytes.data(), bytes.size(), frame), framing::Cut::frame);
        return readSteering(frame, input);
    };
    const std::string whole = messages::steeringFrame(1, {Quaternion(2, 0, 0, 0), 0xFFFFFFFF});
    EXPECT_EQ(meaningOf(whole), FrameMeaning::steering);
    EXPECT_EQ(meaningOf(whole.substr(0, 4) + '\x01' + whole.substr(5)), FrameMeaning::nothing);
    EXPECT_EQ(meaningOf({1, 0, 1, 0, 4}), FrameMeaning::garbage) << "no body";
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const Quaternion& q : {Quaternion(0, 0, 0, 0), Quaternion(1, 0, nan, 0),
                                Quaternion(1e38F, 1e38F, 0, 0), Quaternion(1e-30F, 0, 0, 0)}) {
        EXPECT_EQ(meaningOf(messages::steeringFrame(1, {q, 0})), FrameMeaning::nothing) << q.toString();
    }
    EXPECT_EQ(input.orientation, Quaternion(1, 0, 0, 0));
    EXPECT_EQ(input.controls, 0x4000003FU) << "refused steering changed the input";
}

TEST(ClientSession, CutsFramesAtAnySplit)
{
    Connection connection;
    const std::string frames = messages::steeringFrame(1, {}) + messages::steeringFrame(0x1234, {});
    for (const char byte : frames) {
        connection.client->send({byte});
        connection.ends.poll();
    }
    connection.client->send(frames);
    EXPECT_TRUE(connection.ends.await([&] { return connection.qports == "1 4660 1 4660 "; }));
    EXPECT_EQ(connection.session->takeReceivedBytes(), 2 * frames.size());
    EXPECT_EQ(connection.session->takeReceivedBytes(), 0U);
    connection.session->close();
    connection.session->send(std::string(20001, 'x'));
    EXPECT_EQ(connection.session->state(), ClientSession::State::closed);
}

TEST(ClientSession, BoundsWhatWaitsForItsClient)
{
    Connection reader;
    const std::string first(1000, 'a');
    const std::string rest(19000, 'b');
    const auto fill = [&] {
        reader.session->send(first);
        reader.session->flush();  // in flight until the io_context runs
        reader.session->send(rest);
        reader.session->flush();
    };
    fill();
    EXPECT_TRUE(reader.ends.await([&] { return reader.client->received == first + rest; }));
    fill();
    EXPECT_EQ(reader.session->state(), ClientSession::State::open);
    reader.session->send("c");
    EXPECT_EQ(reader.session->cutOffReason(), "does not read what it is sent, 20000 bytes wait");

    Connection slow;
    slow.client->paused = true;
    for (int i = 0; i < 100; ++i) {
        slow.session->send(first);
        slow.session->flush();
        slow.ends.poll();
    }
    EXPECT_EQ(slow.session->state(), ClientSession::State::cutOff);
}
