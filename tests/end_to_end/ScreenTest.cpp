#include "tests/end_to_end/GameSession.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;
using messages::ShipState;
using support::countChanged;
using support::Picture;
using support::Pixel;
using support::Region;

namespace {

constexpr int enough = 60;  // of the 2,500 pixels of a place show the object there

std::string shipAt(ShipState ship, Vector3 position)
{
    ship.position = position;
    return messages::infoFrame(ship);
}

// States as a server sends them to move a ship and let it rest: the client blends to the last within half a
// second.
void fly(GameSession& game, std::uint64_t id, Vector3 from, Vector3 to)
{
    for (unsigned int i = 1; i <= 14; ++i) {
        const float way = std::min(1.0F, static_cast<float>(i) / 10.0F);
        game.server.sendUdp(messages::updateFrame(id, 1000 + 50 * i, from + (to - from) * way));
        std::this_thread::sleep_for(50ms);
    }
    std::this_thread::sleep_for(800ms);
}

}  // namespace

TEST(Screen, ShipsAppearInTheirColoursMoveAndVanish)
{
    const Region left = GameSession::onScreen(-4, 3, 15);
    const Region right = GameSession::onScreen(4, 3, 15);
    const Region lower = GameSession::onScreen(-4, 0, 15);
    ShipState red = lonelyShip(11);
    ShipState blue = lonelyShip(12);
    blue.blueTeam = true;
    GameSession game;
    game.join(lonelyShip());
    const Picture empty = game.display.screenshot();
    const auto shows = [&empty](const Picture& picture, Region place, bool (Pixel::*kind)() const) {
        return picture.count(place, kind) > empty.count(place, kind) + enough;
    };

    game.server.sendTcp(shipAt(red, game.inView(-4, 3, 15)));
    game.server.sendUdp(shipAt(blue, game.inView(4, 3, 15)));
    const Picture both = game.soon();
    EXPECT_TRUE(shows(both, left, &Pixel::isReddish));
    EXPECT_TRUE(shows(both, right, &Pixel::isBluish));
    EXPECT_EQ(countChanged(empty, both, lower), 0);

    fly(game, red.id, game.inView(-4, 3, 15), game.inView(-4, 0, 15));
    const Picture moved = game.display.screenshot();
    EXPECT_TRUE(shows(moved, lower, &Pixel::isReddish));
    EXPECT_TRUE(shows(moved, right, &Pixel::isBluish));
    EXPECT_EQ(countChanged(empty, moved, left), 0);

    game.server.sendTcp(messages::destroyFrame(red.id) + messages::destroyFrame(blue.id));
    const Picture gone = game.soon();
    EXPECT_EQ(countChanged(empty, gone, lower) + countChanged(empty, gone, right), 0);
}
