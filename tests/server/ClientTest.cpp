#include "network/Messages.h"
#include "peer/Endpoints.h"
#include "server/net/ClientInput.h"
#include "server/net/ClientSession.h"
#include "server/net/Limits.h"
#include "server/net/StepClock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <vector>

using namespace practice;
using namespace std::chrono_literals;

namespace {

constexpr std::uint64_t second = 60;  // steps

/// What a client does for two minutes: datagrams with steering every so many steps, bytes on TCP in each
/// step, and garbage now and then.
struct Traffic
{
    int datagrams = 0;
    std::uint64_t every = 3;
    std::uint64_t streamBytes = 0;
    std::uint64_t garbageEvery = 1000 * second;
};

/// The second in which it is dropped, and why.
std::string firstReason(const Traffic& traffic)
{
    ClientLimits limits(ClientLimits::Config(), 0);
    for (std::uint64_t step = 1; step <= 120 * second; ++step) {
        for (int i = 0; i < traffic.datagrams && step % traffic.every == 1; ++i) {
            limits.receivedDatagram(step);
            if (limits.state() == ClientLimits::State::loading) {
                limits.receivedSteering(step);
            }
        }
        limits.receivedStream(traffic.streamBytes, step);
        if (step % traffic.garbageEvery == 0) {
            limits.receivedGarbage(step);
        }
        if (const std::string reason = limits.reasonToDrop(step); !reason.empty()) {
            return std::to_string(step / second) + ": " + reason;
        }
    }
    return "";
}

FrameMeaning meaningOf(const std::string& bytes, ShipInput& input)
{
    framing::ClientFrame frame;
    EXPECT_EQ(framing::cutClientFrame(bytes.data(), bytes.size(), frame), framing::Cut::frame);
    return readSteering(frame, input);
}

}  // namespace

TEST(ClientLimits, TellAGameFromAnAttack)
{
    const std::pair<Traffic, std::string> cases[] = {
        {{10, 3}, ""},
        {{11, 3}, "19: sent more than 200 datagrams a second"},
        {{400, 20 * second}, ""},
        {{402, 20 * second}, "0: sent more than 200 datagrams a second"},  // the first one does not count
        {{0, 3, 0, 10}, "20: sent no steering over UDP within 20 s"},
        {{1, 1000 * second}, "30: sent no datagram for 30 s"},
        {{1, 3, 8192 / 60}, ""},
        {{1, 3, 65536}, "0: sent more than 8192 bytes a second on TCP"},
        {{1, 3, 0, second}, ""},
        {{1, 3, 0, second / 2}, "20: sent more than 20 messages without sense"},
    };
    for (const auto& [traffic, reason] : cases) {
        EXPECT_EQ(firstReason(traffic), reason);
    }
}

TEST(RateLimitedLog, PassesSomeLinesAndCountsTheOthers)
{
    std::vector<std::string> lines;
    RateLimitedLog log([&](const std::string& line) { lines.push_back(line); });
    for (std::uint64_t step = 0; step <= 2 * second; ++step) {
        log.log("join", step);
        log.log("join", step);
        log.afterStep(step);
    }
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "join"), 100) << "a burst and ten a second";
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "... and 32 more lines like these"), 1);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "... and 110 more lines like these"), 1);
    EXPECT_EQ(lines.size(), 102U);
}

TEST(StepClock, CatchesUpOrGivesUp)
{
    StepClock clock(10ms);
    const StepClock::TimePoint start;
    clock.start(start);
    const auto stepsAt = [&](std::chrono::milliseconds time) {
        int steps = 0;
        while (clock.takeStep(start + time)) {
            ++steps;
        }
        return steps;
    };
    EXPECT_EQ(stepsAt(9ms), 0);
    EXPECT_EQ(stepsAt(10ms), 1);
    EXPECT_EQ(stepsAt(55ms), 4);
    EXPECT_EQ(clock.report(), "played 5 steps, latest 35.0 ms behind");
    EXPECT_EQ(stepsAt(1060ms), 1) << "a second of haste";
    EXPECT_EQ(clock.report(), "played 6 steps, latest 1000.0 ms behind, 1000.0 ms given up");
}

TEST(ClientInput, OnlySoundSteeringCounts)
{
    const std::string whole = messages::steeringFrame(1, {Quaternion(2, 0, 0, 0), 0xFFFFFFFF});
    ShipInput input;
    EXPECT_EQ(meaningOf(whole, input), FrameMeaning::steering);
    EXPECT_EQ(input.orientation, Quaternion(1, 0, 0, 0));
    EXPECT_EQ(input.controls, 0x4000003FU);
    EXPECT_EQ(meaningOf(whole.substr(0, 4) + '\x01' + whole.substr(5), input), FrameMeaning::nothing);
    EXPECT_EQ(meaningOf({1, 0, 1, 0, 4}, input), FrameMeaning::garbage) << "no body";
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const Quaternion& q : {Quaternion(0, 0, 0, 0), Quaternion(1, 0, nan, 0),
                                Quaternion(1e38F, 1e38F, 0, 0), Quaternion(1e-30F, 0, 0, 0)}) {
        EXPECT_EQ(meaningOf(messages::steeringFrame(1, {q, 0}), input), FrameMeaning::nothing)
            << q.toString();
    }
    EXPECT_EQ(input.controls, 0x4000003FU) << "refused steering changed the input";
}

TEST(ClientInput, CutsStreamsAtAnySplitAndDatagramsUpToABreak)
{
    const std::string frame = messages::steeringFrame(1, {});
    const std::string other = messages::steeringFrame(0x1234, {});
    const std::string broken(5, '\0');
    std::vector<int> qports;
    const auto note = [&qports](const framing::ClientFrame& f) { qports.push_back(f.qport); };
    const std::string run = frame + other + frame;
    for (std::size_t split = 0; split <= run.size(); ++split) {
        qports.clear();
        std::string stream = run.substr(0, split);
        EXPECT_TRUE(cutStream(stream, note));
        stream += run.substr(split);
        EXPECT_TRUE(cutStream(stream, note) && stream.empty());
        EXPECT_EQ(qports, (std::vector<int>{1, 0x1234, 1})) << "split at " << split;
    }
    const struct
    {
        std::string datagram;
        bool isSound;
        std::vector<int> qports;
    } cases[] = {
        {"", true, {}},
        {frame + frame, true, {1, 1}},
        {frame + other + frame, true, {1}},
        {frame + broken, false, {1}},
        {frame + frame.substr(0, 7), false, {1}},
        {other + broken, true, {}},
    };
    for (const auto& c : cases) {
        qports.clear();
        EXPECT_EQ(cutDatagram(c.datagram.data(), c.datagram.size(), 1, note), c.isSound);
        EXPECT_EQ(qports, c.qports);
    }
}

TEST(ClientSession, CutsOffAClientThatStopsReading)
{
    peer::Endpoints ends;
    using boost::asio::ip::tcp;
    tcp::acceptor acceptor(ends.io, {boost::asio::ip::address_v4::loopback(), 0});
    tcp::socket socket(ends.io, tcp::v4());
    socket.set_option(boost::asio::socket_base::receive_buffer_size(1));
    socket.connect(acceptor.local_endpoint());
    peer::StreamEnd& client = ends.add(std::move(socket));
    const auto session = std::make_shared<ClientSession>(acceptor.accept(), 20000);
    session->start([](const framing::ClientFrame&) {});
    std::string sent;
    const auto send = [&](char byte) {
        sent += std::string(1000, byte);
        session->send(std::string(1000, byte));
        session->flush();
        ends.poll();
    };
    for (char byte = 'a'; byte <= 'z'; ++byte) {
        send(byte);
    }
    EXPECT_TRUE(ends.await([&] { return client.received == sent; })) << "it reads";
    client.paused = true;
    for (int i = 0; i < 100; ++i) {
        send('x');
    }
    EXPECT_EQ(session->state(), ClientSession::State::cutOff);
    EXPECT_EQ(session->cutOffReason(), "does not read what it is sent, 20000 bytes wait");
}
