#include "PracticeServer/MatchBroadcast.h"

#include "PracticeServer/DatagramPacker.h"
#include "tests/PracticeServer/TestClient.h"

#include <gtest/gtest.h>

#include <map>

using namespace practice;

namespace {

/// A match whose reliable frames are kept as messages.
class Broadcast : public testing::Test
{
protected:
    std::vector<ServerMessage> sent;
    Match match{1, &broadcast};
    MatchBroadcast broadcast{match,
                             [this](const std::string& frame) { sent.push_back(messagesIn(frame).at(0)); }};

    ObjectId place(const Vector3& position)
    {
        const ObjectId id = match.addHuman();
        match.editShip(id)->position = position;
        return id;
    }
    void fireOnce(ObjectId id)
    {
        match.setInput(id, {Quaternion(), control::fire});
        step();
        match.setInput(id, {Quaternion(), 0});
    }
    void step(int times = 1)
    {
        for (int i = 0; i < times; ++i) {
            match.step();
            broadcast.afterStep();
        }
    }
    template <typename Message>
    std::vector<Message> sentOf(MessageTypes::MessageType type) const
    {
        return messagesOf<Message>(sent, type);
    }
};

}  // namespace

TEST_F(Broadcast, AShotIsAnnouncedWithItsVelocityAndDestroyedWhereItHits)
{
    const ObjectId shooter = place({0, 0, 0});
    place({0, 0, 80});
    sent.clear();
    fireOnce(shooter);
    ASSERT_EQ(sent.size(), 1U);
    const auto shot = sent[0].as<Vantor::ObjectInfo>();
    EXPECT_EQ(shot.objecttype(), 1U);
    EXPECT_EQ(shot.orientation().w(), 1.0F);
    EXPECT_GT(shot.projectiledata().velocity().z(), 100.0F);
    EXPECT_TRUE(shot.projectiledata().blueteam());
    EXPECT_EQ(shot.timestamp(), match.timestamp());
    step(60);
    const auto destroyed = sentOf<Vantor::ObjectDestroy>(MessageTypes::OBJECT_DESTROY);
    ASSERT_EQ(destroyed.size(), 1U);
    EXPECT_EQ(destroyed[0].id(), shot.id());
}

TEST_F(Broadcast, EvenAPointBlankShotIsShownForAWhileBeforeItExplodes)
{
    const ObjectId shooter = place({0, 0, 0});
    place({0, 0, 10});
    fireOnce(shooter);
    step(5);
    ASSERT_TRUE(match.allShots().empty());  // it has hit
    EXPECT_TRUE(sentOf<Vantor::ObjectDestroy>(MessageTypes::OBJECT_DESTROY).empty());
    step(10);
    EXPECT_EQ(sentOf<Vantor::ObjectDestroy>(MessageTypes::OBJECT_DESTROY).size(), 1U);
}

TEST_F(Broadcast, ChangedDataLeavesWithTheSnapshotInPlaceOfTheUpdate)
{
    const ObjectId shooter = place({0, 0, 0});
    const ObjectId enemy = place({0, 0, 20});
    fireOnce(shooter);
    sent.clear();
    step(20);
    EXPECT_TRUE(sentOf<Vantor::ObjectInfo>(MessageTypes::OBJECT_INFO).empty());
    const auto updates = messagesIn(broadcast.takeSnapshot().at(0));
    const auto infos = sentOf<Vantor::ObjectInfo>(MessageTypes::OBJECT_INFO);
    ASSERT_EQ(updates.size(), 1U);
    EXPECT_EQ(updates[0].as<Vantor::ObjectUpdate>().id(), shooter);
    ASSERT_EQ(infos.size(), 1U);
    EXPECT_EQ(infos[0].id(), enemy);
    EXPECT_EQ(infos[0].playerdata().health(), Rules().fullHealth - Rules().shotDamage);
    EXPECT_EQ(messagesIn(broadcast.takeSnapshot().at(0)).size(), 1U);  // still the same match time
    step();
    EXPECT_EQ(messagesIn(broadcast.takeSnapshot().at(0)).size(), 2U);
}

TEST_F(Broadcast, ADeadShipIsDestroyedLeavesExplosionsAndComesBackUnderItsId)
{
    const ObjectId shooter = place({0, 0, 0});
    const ObjectId victim = place({0, 0, 80});
    match.editShip(victim)->health = 1.0F;
    fireOnce(shooter);
    step(60);
    std::map<std::uint64_t, int> born;
    for (const auto& info : sentOf<Vantor::ObjectInfo>(MessageTypes::OBJECT_INFO)) {
        ++born[info.id()];
    }
    const auto destroyed = sentOf<Vantor::ObjectDestroy>(MessageTypes::OBJECT_DESTROY);
    EXPECT_EQ(destroyed.size(), 1U + 1U + 3U);  // shot, ship, debris
    for (const auto& destroy : destroyed) {
        EXPECT_EQ(born.count(destroy.id()), 1U) << destroy.id();
    }
    EXPECT_EQ(messagesIn(broadcast.takeSnapshot().at(0)).size(),
              0U);  // the shooter's new score went as full state
    sent.clear();
    step(60 * 4);
    ASSERT_EQ(sentOf<Vantor::ObjectInfo>(MessageTypes::OBJECT_INFO).size(), 1U);
    const auto back = sent[0].as<Vantor::ObjectInfo>();
    EXPECT_EQ(back.id(), victim);
    EXPECT_EQ(back.playerdata().health(), Rules().fullHealth);
    EXPECT_EQ(back.playerdata().blueteamscore(), 1);
}

TEST_F(Broadcast, TheVelocityMeasuredFromSuccessiveStatesIsTheShips)
{
    const ObjectId id = place({0, 0, 0});
    match.setInput(id, {Quaternion(), control::forward});
    step(300);
    const auto first = messagesIn(broadcast.takeSnapshot().at(0)).at(0).as<Vantor::ObjectUpdate>();
    step(3);
    const auto second = messagesIn(broadcast.takeSnapshot().at(0)).at(0).as<Vantor::ObjectUpdate>();
    EXPECT_EQ(second.timestamp() - first.timestamp(), 50U);
    const float speed = (second.position().z() - first.position().z()) / 0.05F;
    EXPECT_NEAR(speed, match.findShip(id)->velocity.z, 0.05F);
}

TEST_F(Broadcast, ANewcomerIsToldOfTheLivingAndOfShotsInFlight)
{
    const ObjectId shooter = place({0, 0, 0});
    const ObjectId dead = place({0, 0, -80});
    match.editShip(dead)->alive = false;
    match.editShip(dead)->respawnIn = 100.0F;
    fireOnce(shooter);
    std::vector<std::uint32_t> types;
    for (const std::string& frame : broadcast.introduction()) {
        types.push_back(messagesIn(frame).at(0).as<Vantor::ObjectInfo>().objecttype());
    }
    EXPECT_EQ(types, (std::vector<std::uint32_t>{0, 1}));
}

TEST(DatagramPacker, FillsDatagramsInOrderWithoutSplittingAFrame)
{
    DatagramPacker packer;
    std::string everything;
    for (int i = 0; i < 60; ++i) {
        const std::string frame(50 + static_cast<std::size_t>(i % 7), static_cast<char>('A' + i));
        packer.add(frame);
        everything += frame;
    }
    std::string joined;
    for (const std::string& datagram : packer.take()) {
        EXPECT_LE(datagram.size(), DatagramPacker::largestDatagram);
        EXPECT_TRUE(joined.empty() || joined.back() != datagram.front());
        joined += datagram;
    }
    EXPECT_EQ(joined, everything);
    EXPECT_EQ(packer.take(), std::vector<std::string>{""});
}
