#include "network/Messages.h"
#include "peer/Endpoints.h"
#include "server/net/Admission.h"
#include "server/net/ClientInput.h"
#include "server/net/ClientSession.h"
#include "server/net/Limits.h"
#include "server/net/StepClock.h"

#include <gtest/gtest.h>

#include <limits>

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
        session->start({});
    }

    peer::Endpoints ends;
    peer::StreamEnd* client;
    std::shared_ptr<ClientSession> session;
};

}  // namespace

TEST(Admission, BelievesClientsAndNoStrangers)
{
    using boost::asio::ip::make_address_v4;
    const auto home = make_address_v4("192.0.2.1");  // of clients 1 and 2
    const auto away = make_address_v4("192.0.2.2");  // of client 3
    const auto loopback = make_address_v4("127.0.0.2");
    Admission admission(64, 2);
    admission.add(1, home, 0);
    admission.add(2, home, 0);
    admission.add(3, away, 0);
    const struct
    {
        std::uint64_t step;
        Admission::Endpoint sender;
        std::uint16_t qport;
        std::string verdicts;  ///< one for each datagram: ignored, guess, believed or moved
    } cases[] = {
        {0, {away, 1}, 1, "g"},  // the qport is right, the host is not
        {0, {home, 1}, 1, "b"},  // the first datagram
        {0, {home, 1}, 2, "b"},  // one socket may play twice
        {59, {home, 9}, 1, "iiiiiiiiiiii"},
        {60, {home, 9}, 1, "mbbbbbbbbbbb"},  // a second later; there is no ration for the client itself
        {61, {home, 1}, 1, "g"},
        {90, {away, 5}, 77, "ggggggg"},  // leaves one of the ration
        {90, {away, 6}, 3, "b"},
        {300, {home, 5}, 77, "gggggggg"},  // spends the ration: now a client must repeat its qport ...
        {300, {home, 3}, 1, "ggggggggg"},
        {301, {home, 4}, 1, "g"},  // takes a vote away
        {302, {home, 3}, 1, "gm"},
        {400, {away, 5}, 77, "gggggggg"},
        {400, {away, 7}, 3, "ggggggggg"},
        {459, {away, 5}, 77, "g"},
        {460, {away, 7}, 3, "g"},  // ... within a second
        {520, {away, 7}, 3, "m"},  // the ration grows by one a second
    };
    for (const auto& c : cases) {
        for (const char verdict : c.verdicts) {
            const auto actual = static_cast<std::size_t>(admission.judge(c.qport, c.sender, c.step));
            EXPECT_EQ("igbm"[actual], verdict) << &c - cases;
        }
    }
    EXPECT_EQ(admission.endpointOf(1), Admission::Endpoint(home, 3));

    EXPECT_EQ(admission.reasonToTurnAway(home), "one address gets 2 places");
    admission.remove(1);
    EXPECT_EQ(admission.reasonToTurnAway(home), "");
    admission.add(4, loopback, 0);
    admission.add(5, loopback, 0);
    EXPECT_EQ(admission.reasonToTurnAway(loopback), "");
}

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
    EXPECT_EQ(clock.takeLatestDelay(), 1000ms);
    EXPECT_EQ(stepsAt(1270ms), 1) << "the next step was due at 1070 ms";
    EXPECT_EQ(clock.takeLatestDelay(), 200ms);
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
