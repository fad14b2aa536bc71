// What a bad network does to the scene.
#include "relay/Replay.h"
#include "server/net/MatchBroadcast.h"
#include "tests/hostile/Arena.h"
#include "tests/network/Support.h"

using namespace relay;

namespace {

constexpr Time start{std::chrono::hours(1)};

DelayQueue network(const Conditions& conditions, Transport transport, std::uint32_t seed = 1)
{
    return DelayQueue(Impairment(conditions, seed, {transport, 1, Direction::toClient}));
}

}  // namespace

// 16 ships fly the same circle at 40 units a second. The network is bad from second 1 to 3. The updates
// count once nothing of that time is under way any more. An error of 5 units blends away unseen.
TEST(BadNetwork, MotionRecoversWithinTwoUpdates)
{
    // loss, copies, jitter, 8 kB/s, all
    const Conditions cases[] = {
        {0, 0, 100}, {0, 0, 0, 25}, {100, 100}, {0, 0, 0, 0, 0, 0, 8}, {100, 100, 30, 25, 20, 0, 8}};
    Arena arena;
    for (const Conditions& faults : cases) {
        arena.reset();
        arena.receive(messages::infoFrame(messages::ShipState{7}));
        DelayQueue bad = network(faults, Transport::datagrams), good = network({}, Transport::datagrams);
        Vector3 place;
        for (unsigned frame = 0, updates = 0; updates < 2; ++frame) {
            const Time now = start + frame * std::chrono::microseconds(1'000'000) / 60;
            const auto angle = static_cast<float>(frame) / 150;
            place = Vector3(100 * std::sin(angle), 0, 100 * std::cos(angle));
            std::string snapshot;
            for (std::uint64_t id = 7; id < 23; ++id) {
                snapshot += messages::updateFrame(id, 1000 + frame / 3 * 50, place);
            }
            if (frame % 3 == 0) {
                (frame >= 60 && frame < 180 ? bad : good).push(now, snapshot);
            }
            for (DelayQueue* const queue : {&bad, &good}) {
                while (const auto datagram = queue->pop(now)) {
                    arena.receive(*datagram, 0);
                    updates += frame >= 180 && bad.size() == 0 ? 1U : 0U;
                }
            }
            arena.receive("");
        }
        EXPECT_LT((SceneGraph::instance->getOBjectById(7)->smoothPosition - place).length(), 5)
            << &faults - cases;
    }
}

TEST(BadNetwork, AStreamCutAnywhereGivesTheSameScene)
{
    std::string stream;
    for (const auto& piece : readServerTrack(VANTOR_TESTS "relay/recordings/short-match.rec", {}).pieces) {
        stream += piece.transport == Transport::stream ? piece.bytes : "";
    }
    Arena arena;
    const auto sceneAfter = [&](double longestPiece, std::uint32_t seed) {
        DelayQueue queue = network({0, 0, 0, 0, 0, 0, 0, longestPiece}, Transport::stream, seed);
        queue.push(start, stream);
        arena.reset();
        while (queue.size() > 0) {
            arena.receive(queue.pop(start).value(), 0);
        }
        arena.receive("");
        std::string scene;
        for (const Transform* const object : SceneGraph::instance->children) {
            scene +=
                std::to_string(object->id) + ' ' + std::to_string(object->smoothPosition.length()) + '\n';
        }
        return scene;
    };
    std::set<std::string> scenes;
    printedBy([&] {
        for (std::uint32_t seed = 0; seed <= 1000; ++seed) {
            scenes.insert(sceneAfter(seed == 0 ? 0 : 40, seed));  // first uncut
        }
    });
    EXPECT_EQ(scenes.size(), 1U);
}

// 8 bots play. 216000 steps are an hour of match time. A snapshot follows every third step, as on the server.
TEST(BadNetwork, AnHourOfMatchesEndsInTheSameScene)
{
    const Conditions faults = {50, 30, 1, 1, 1};
    DelayQueue stream = network(faults, Transport::stream), datagrams = network(faults, Transport::datagrams);
    Time now = start;
    practice::Match match({});
    practice::MatchBroadcast broadcast(match, [&](const std::string& frame) { stream.push(now, frame); });
    match.addObserver(&broadcast);
    Arena arena;
    const std::vector<std::string> nothing;
    printedBy([&] {
        for (unsigned step = 0; step < 216000 + 1500; ++step, now += std::chrono::microseconds(16667)) {
            if (step < 8) {
                match.addBot();
            }
            if (step < 216000) {  // later the network delivers the rest, and all shots expire
                match.step();
                broadcast.afterStep();
                for (const auto& datagram : match.stepCount() % 3 == 0 ? broadcast.takeSnapshot() : nothing) {
                    datagrams.push(now, datagram);
                }
            }
            for (DelayQueue* const queue : {&stream, &datagrams}) {
                while (const auto frames = queue->pop(now)) {
                    arena.receive(*frames, 0);
                }
            }
            arena.receive("");
        }
    });
    std::size_t alive = 0;
    for (const practice::Ship& ship : match.allShips()) {
        const auto* shown = SceneGraph::instance->getOBjectById(static_cast<long long>(ship.id));
        EXPECT_TRUE(ship.alive ? shown && shown->serverPosition[0] == ship.position : !shown) << ship.name;
        alive += ship.alive ? 1 : 0;
    }
    EXPECT_GT(alive, 0U);
    EXPECT_EQ(SceneGraph::instance->children.size(), 2 + alive) << "not only carriers and ships";
}
